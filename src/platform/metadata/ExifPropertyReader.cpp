#include "platform/metadata/ExifPropertyReader.h"

#include "platform/metadata/ColourFacts.h"
#include "platform/metadata/ExifDictionaries.h"
#include "platform/metadata/ExifLibrary.h"
#include "platform/metadata/HeaderSize.h"
#include "platform/metadata/HeifContainer.h"

#include <exiv2/exiv2.hpp>

namespace kelvaro {

namespace {

// Files above are no photos; the library maps the file, it does not read it whole.
constexpr std::uintmax_t kMaximumBytes = std::uintmax_t(4) << 30;

std::optional<long> firstNumber(const Exiv2::ExifData& data, const std::string& key,
                                long index = 0) {
    const auto at = data.findKey(Exiv2::ExifKey(key));
    if (at == data.end() || at->count() <= index) return std::nullopt;
    return at->toLong(index);
}

// The directory that holds the mosaic or the linear RAW picture.
std::optional<std::string> rawGroup(const Exiv2::ExifData& data) {
    for (const char* group :
         {"SubImage1", "SubImage2", "SubImage3", "SubImage4", "Image", "Image2", "Image3"}) {
        const std::string prefix = std::string("Exif.") + group + ".";
        const auto photometric = firstNumber(data, prefix + "PhotometricInterpretation");
        const auto kind = firstNumber(data, prefix + "NewSubfileType").value_or(0);
        if (kind == 0 && (photometric == 32803 || photometric == 34892)) return prefix;
    }
    return std::nullopt;
}

std::optional<PixelSize> sizeFrom(std::optional<long> width, std::optional<long> height) {
    if (!width || !height || *width < 1 || *height < 1 || *width > 1 << 20 || *height > 1 << 20) {
        return std::nullopt;
    }
    return PixelSize{int(*width), int(*height)};
}

std::optional<PixelSize> storedSize(const Exiv2::Image& image) {
    const Exiv2::ExifData& exif = image.exifData();
    auto stored = sizeFrom(image.pixelWidth(), image.pixelHeight());
    const auto group = rawGroup(exif);
    if (group) {
        stored = sizeFrom(firstNumber(exif, *group + "ImageWidth"),
                          firstNumber(exif, *group + "ImageLength"));
    }
    if (!stored) return stored;
    const auto isNear = [&](const std::optional<PixelSize>& size) {
        return size && size->width <= stored->width && size->height <= stored->height &&
               size->width * 10L >= stored->width * 9L && size->height * 10L >= stored->height * 9L;
    };
    if (group && firstNumber(exif, "Exif.Image.DNGVersion")) {
        const auto crop = sizeFrom(firstNumber(exif, *group + "DefaultCropSize", 0),
                                   firstNumber(exif, *group + "DefaultCropSize", 1));
        return crop && crop->width <= stored->width && crop->height <= stored->height ? crop
                                                                                      : stored;
    }
    const bool isRaw = group || image.imageType() == Exiv2::ImageType::cr2 ||
                       image.imageType() == Exiv2::ImageType::raf ||
                       image.imageType() == Exiv2::ImageType::orf ||
                       image.imageType() == Exiv2::ImageType::rw2;
    if (isRaw) {
        const auto named = sizeFrom(firstNumber(exif, "Exif.Photo.PixelXDimension"),
                                    firstNumber(exif, "Exif.Photo.PixelYDimension"));
        if (isNear(named)) return named;
    }
    return stored;
}

int orientationOf(const PhotoProperties& properties) {
    const auto code = properties.tiff.integer("Orientation").value_or(1);
    return code >= 1 && code <= 8 ? int(code) : 1;
}

void readImage(const std::filesystem::path& path, PhotoProperties& properties) {
    const auto image = Exiv2::ImageFactory::open(path.string());
    if (!image.get()) return;
    // A block that breaks off leaves what was read before it.
    guarded([&] { image->readMetadata(); });
    guarded([&] { addExif(image->exifData(), properties); });
    guarded([&] { addXmp(image->xmpData(), properties); });
    guarded([&] { addIptc(image->iptcData(), properties); });
    guarded([&] { properties.storedSize = storedSize(*image); });
}

void readHeifPart(const HeifFacts& facts, PhotoProperties& properties) {
    if (properties.exif.isEmpty() && properties.tiff.isEmpty() && !facts.exif.empty()) {
        guarded([&] {
            Exiv2::ExifData data;
            Exiv2::ExifParser::decode(data, reinterpret_cast<const Exiv2::byte*>(facts.exif.data()),
                                      std::uint32_t(facts.exif.size()));
            addExif(data, properties);
        });
    }
    properties.storedSize = facts.size;
    properties.orientation = facts.orientation;
}

// Bits of one sample where the picture itself is a TIFF directory.
std::optional<int> bitsInDirectory(const Exiv2::ExifData& exif) {
    const std::string group = rawGroup(exif).value_or("Exif.Image.");
    const auto bits = firstNumber(exif, group + "BitsPerSample");
    return bits && *bits >= 1 && *bits <= 64 ? std::optional<int>(int(*bits)) : std::nullopt;
}

void readColourOfImage(const std::filesystem::path& path, PhotoColour& colour) {
    const auto image = Exiv2::ImageFactory::open(path.string());
    if (!image.get()) return;
    guarded([&] { image->readMetadata(); });
    const Exiv2::ExifData& exif = image->exifData();
    if (image->imageType() != Exiv2::ImageType::jpeg && image->imageType() != Exiv2::ImageType::png)
        guarded([&] { colour.bitsPerSample = bitsInDirectory(exif); });
    if (image->iccProfileDefined()) {
        const Exiv2::DataBuf& profile = *image->iccProfile();
        colour.profileName = profileName({reinterpret_cast<const std::byte*>(profile.pData_),
                                          static_cast<std::size_t>(profile.size_)});
    }
    if (colour.profileName) return;
    if (const auto at = exif.findKey(Exiv2::ExifKey("Exif.Image.InterColorProfile"));
        at != exif.end() && at->size() > 0 && !rawGroup(exif)) {
        std::vector<std::byte> bytes(static_cast<std::size_t>(at->size()));
        at->copy(reinterpret_cast<Exiv2::byte*>(bytes.data()), Exiv2::invalidByteOrder);
        colour.profileName = profileName(bytes);
    }
    if (colour.profileName || rawGroup(exif)) return;
    const auto space = firstNumber(exif, "Exif.Photo.ColorSpace");
    const auto rules = exif.findKey(Exiv2::ExifKey("Exif.Iop.InteroperabilityIndex"));
    const bool isAdobe = space == 2 || (rules != exif.end() && rules->toString() == "R03");
    if (space == 1)
        colour.profileName = "sRGB IEC61966-2.1";
    else if (isAdobe)
        colour.profileName = "Adobe RGB (1998)";
}

} // namespace

ExifPropertyReader::ExifPropertyReader() {
    startExifLibrary();
}

Result<PhotoProperties> ExifPropertyReader::read(const std::filesystem::path& path) {
    std::string name = "\"";
    name.append(path.filename().string()).append("\"");
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (!std::filesystem::exists(status)) {
        return fail(FailureKind::notFound, "The file " + name + " is not there.");
    }
    const auto bytes = std::filesystem::file_size(path, error);
    if (error) return fail(FailureKind::unreadable, "The file " + name + " cannot be read.");
    if (bytes == 0) return fail(FailureKind::malformed, "The file " + name + " is empty.");
    if (bytes > kMaximumBytes)
        return fail(FailureKind::tooLarge, "The file " + name + " is too large.");
    if (!canRead(path))
        return fail(FailureKind::unreadable, "The file " + name + " cannot be read.");

    PhotoProperties properties;
    guarded([&] { readImage(path, properties); });
    properties.orientation = orientationOf(properties);
    guarded([&] {
        if (const auto heif = readHeif(path)) readHeifPart(*heif, properties);
        if (!properties.storedSize) properties.storedSize = sizeInHeader(path);
    });
    return properties;
}

PhotoColour ExifPropertyReader::readColour(const std::filesystem::path& path) {
    PhotoColour colour;
    guarded([&] { readColourOfImage(path, colour); });
    guarded([&] {
        if (const auto heif = readHeif(path)) {
            if (heif->bitsPerSample) colour.bitsPerSample = heif->bitsPerSample;
            const auto embedded = profileName(heif->profile);
            if (embedded)
                colour.profileName = embedded;
            else if (heif->primaries)
                colour.profileName = primariesName(*heif->primaries);
        }
        if (!colour.bitsPerSample) colour.bitsPerSample = bitsInHeader(path);
    });
    return colour;
}

} // namespace kelvaro
