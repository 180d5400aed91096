#include "library/PhotoInfo.h"

#include <array>
#include <limits>

namespace kelvaro {

namespace {

struct Format {
    std::string_view extension, label;
};
constexpr std::array kFormats{Format{"ARW", "Sony RAW"},       Format{"SR2", "Sony RAW"},
                              Format{"SRF", "Sony RAW"},       Format{"CR2", "Canon RAW"},
                              Format{"CR3", "Canon RAW"},      Format{"CRW", "Canon RAW"},
                              Format{"NEF", "Nikon RAW"},      Format{"NRW", "Nikon RAW"},
                              Format{"RAF", "Fujifilm RAW"},   Format{"RW2", "Panasonic RAW"},
                              Format{"ORF", "Olympus RAW"},    Format{"DNG", "Digital Negative"},
                              Format{"PEF", "Pentax RAW"},     Format{"SRW", "Samsung RAW"},
                              Format{"IIQ", "Phase One RAW"},  Format{"3FR", "Hasselblad RAW"},
                              Format{"FFF", "Hasselblad RAW"}, Format{"X3F", "Sigma RAW"},
                              Format{"RWL", "Leica RAW"},      Format{"JPG", "JPEG"},
                              Format{"JPEG", "JPEG"},          Format{"HEIC", "HEIC"},
                              Format{"HEIF", "HEIF"},          Format{"PNG", "PNG"},
                              Format{"TIF", "TIFF"},           Format{"TIFF", "TIFF"}};

// By the EXIF value; empty texts are not shown.
constexpr std::array<std::string_view, 9> kPrograms{
    "",         "Manual", "Program",  "Aperture priority", "Shutter priority",
    "Creative", "Action", "Portrait", "Landscape"};
constexpr std::array<std::string_view, 7> kMeterings{
    "", "Average", "Center-weighted", "Spot", "Multi-spot", "Multi-segment", "Partial"};

template<std::size_t Count>
std::optional<std::string> named(const std::array<std::string_view, Count>& names,
                                 std::optional<std::int64_t> value) {
    if (!value || *value < 1 || *value >= static_cast<std::int64_t>(Count)) return std::nullopt;
    return std::string(names[static_cast<std::size_t>(*value)]);
}

std::optional<double> positive(std::optional<double> value) {
    return value && *value > 0 ? value : std::nullopt;
}

std::optional<double> negatedIf(bool isNegative, std::optional<double> value) {
    return value && isNegative ? std::optional(-*value) : value;
}

std::optional<std::string> colourText(const PhotoColour& colour) {
    std::string text = colour.profileName.value_or("");
    if (colour.bitsPerSample) {
        if (!text.empty()) text += ", ";
        text += std::to_string(*colour.bitsPerSample) + "-bit";
    }
    return text.empty() ? std::nullopt : std::optional(text);
}

void addExposure(const PropertyDictionary& exif, PhotoInfo& info) {
    info.aperture = positive(exif.number("FNumber"));
    info.shutter = positive(exif.number("ExposureTime"));
    const auto iso = exif.integer("ISOSpeedRatings");
    if (iso && *iso > 0 && *iso <= std::numeric_limits<int>::max()) info.iso = int(*iso);
    info.focal = positive(exif.number("FocalLength"));
    info.focal35 = positive(exif.number("FocalLenIn35mmFilm"));
    info.bias = exif.number("ExposureBiasValue");
}

void addModes(const PropertyDictionary& exif, PhotoInfo& info) {
    info.program = named(kPrograms, exif.integer("ExposureProgram"));
    info.metering = named(kMeterings, exif.integer("MeteringMode"));
    if (const auto flash = exif.integer("Flash"))
        info.flash = *flash & 1 ? "Fired" : "Did not fire";
    if (const auto balance = exif.integer("WhiteBalance"))
        info.whiteBalance = *balance == 0 ? "Auto" : "Manual";
}

void addPlace(const PropertyDictionary& gps, PhotoInfo& info) {
    info.latitude = negatedIf(gps.text("LatitudeRef") == "S", gps.number("Latitude"));
    info.longitude = negatedIf(gps.text("LongitudeRef") == "W", gps.number("Longitude"));
    info.altitude = negatedIf(gps.integer("AltitudeRef") == 1, gps.number("Altitude"));
}

} // namespace

std::string formatText(std::string_view extension) {
    std::string capitals(extension);
    for (char& c : capitals)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c;
    for (const Format& format : kFormats) {
        if (format.extension == capitals) return std::string(format.label) + " (" + capitals + ")";
    }
    return capitals;
}

Result<PhotoInfo> readPhotoInfo(PropertyReader& reader, const Photo& photo) {
    const auto properties = reader.read(photo.url);
    if (!properties) return fail(properties.error());
    return makePhotoInfo(*properties, reader.readColour(photo.url), photo);
}

PhotoInfo makePhotoInfo(const PhotoProperties& properties, const PhotoColour& colour,
                        const Photo& photo) {
    PhotoInfo info;
    addExposure(properties.exif, info);
    info.camera = cameraName(properties.tiff.text("Make"), properties.tiff.text("Model"));
    info.lens = properties.exif.text("LensModel");
    if (!info.lens) info.lens = properties.auxiliary.text("LensModel");
    addModes(properties.exif, info);
    info.taken = captureTime(properties);
    info.dimensions = properties.uprightSize();
    if (info.dimensions)
        info.megapixels = double(info.dimensions->width) * info.dimensions->height / 1e6;
    info.colour = colourText(colour);
    info.format = formatText(extensionOf(photo.url));
    info.size = photo.fileSize;
    info.modified = photo.modified;
    info.created = photo.created;
    addPlace(properties.gps, info);
    info.software = properties.tiff.text("Software");
    info.artist = properties.tiff.text("Artist");
    info.copyright = properties.tiff.text("Copyright");
    return info;
}

} // namespace kelvaro
