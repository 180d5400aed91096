#include "platform/metadata/ExifDictionaries.h"

#include <exiv2/easyaccess.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

namespace kelvaro {

namespace {

constexpr long kMaximumNumbers = 64;
constexpr std::size_t kMaximumText = 4096;

// Tags whose usual names differ from the library's, or which it may not know.
struct Name {
    std::uint16_t tag;
    const char* name;
};
constexpr std::array kExifNames{
    Name{0x8827, "ISOSpeedRatings"},
    Name{0x8830, "SensitivityType"},
    Name{0x8831, "StandardOutputSensitivity"},
    Name{0x8832, "RecommendedExposureIndex"},
    Name{0x9003, "DateTimeOriginal"},
    Name{0x9004, "DateTimeDigitized"},
    Name{0x9010, "OffsetTime"},
    Name{0x9011, "OffsetTimeOriginal"},
    Name{0x9012, "OffsetTimeDigitized"},
    Name{0x9291, "SubSecTimeOriginal"},
    Name{0xa405, "FocalLenIn35mmFilm"},
    Name{0xa430, "CameraOwnerName"},
    Name{0xa431, "BodySerialNumber"},
    Name{0xa432, "LensSpecification"},
    Name{0xa433, "LensMake"},
    Name{0xa434, "LensModel"},
    Name{0xa435, "LensSerialNumber"},
};
// EXIF tags that TIFF/EP and DNG allow in the first directory.
constexpr std::array<std::uint16_t, 14> kExifTagsInImage{0x829a, 0x829d, 0x8822, 0x8827, 0x9003,
                                                         0x9004, 0x9204, 0x9207, 0x9208, 0x9209,
                                                         0x920a, 0xa405, 0xa432, 0xa434};

bool isUtf8(std::string_view text) {
    for (std::size_t i = 0; i < text.size();) {
        const auto lead = static_cast<unsigned char>(text[i]);
        const std::size_t more = lead < 0x80   ? 0
                                 : lead < 0xc2 ? 4
                                 : lead < 0xe0 ? 1
                                 : lead < 0xf0 ? 2
                                 : lead < 0xf5 ? 3
                                               : 4;
        if (more > 3 || i + more >= text.size() + (more == 0)) return false;
        for (std::size_t k = 1; k <= more; ++k) {
            if ((static_cast<unsigned char>(text[i + k]) & 0xc0) != 0x80) return false;
        }
        i += more + 1;
    }
    return true;
}

// Old cameras and programs wrote Latin-1.
std::string asUtf8(std::string text) {
    if (const auto end = text.find('\0'); end != std::string::npos) text.resize(end);
    if (text.size() > kMaximumText) {
        text.resize(kMaximumText);
        while (!text.empty() && (static_cast<unsigned char>(text.back()) & 0xc0) == 0x80)
            text.pop_back();
        if (!text.empty() && static_cast<unsigned char>(text.back()) >= 0xc0) text.pop_back();
    }
    if (isUtf8(text)) return text;
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            result.push_back(c);
        } else if (byte >= 0xa0) { // those between are control characters, drawn as empty boxes
            result.push_back(char(0xc0 | byte >> 6));
            result.push_back(char(0x80 | (byte & 0x3f)));
        }
    }
    return result;
}

bool isRational(Exiv2::TypeId type) {
    return type == Exiv2::unsignedRational || type == Exiv2::signedRational;
}

bool isNumeric(Exiv2::TypeId type) {
    switch (type) {
    case Exiv2::unsignedByte:
    case Exiv2::signedByte:
    case Exiv2::unsignedShort:
    case Exiv2::signedShort:
    case Exiv2::unsignedLong:
    case Exiv2::signedLong:
    case Exiv2::tiffFloat:
    case Exiv2::tiffDouble:
        return true;
    default:
        return isRational(type);
    }
}

std::optional<double> numberAt(const Exiv2::Exifdatum& datum, long i) {
    if (isRational(datum.typeId())) {
        const Exiv2::Rational r = datum.toRational(i);
        // The library hands unsigned values out as signed ones.
        const bool isSigned = datum.typeId() == Exiv2::signedRational;
        const double top = isSigned ? double(r.first) : double(std::uint32_t(r.first));
        const double bottom = isSigned ? double(r.second) : double(std::uint32_t(r.second));
        if (bottom == 0) return std::nullopt;
        return top / bottom;
    }
    const auto type = datum.typeId();
    if (type == Exiv2::tiffFloat || type == Exiv2::tiffDouble) {
        const double v = double(datum.toFloat(i));
        return std::isfinite(v) ? std::optional(v) : std::nullopt;
    }
    const auto v = datum.toLong(i);
    return type == Exiv2::unsignedLong ? double(std::uint32_t(v)) : double(v);
}

bool isWhole(Exiv2::TypeId type) {
    return isNumeric(type) && !isRational(type) && type != Exiv2::tiffFloat &&
           type != Exiv2::tiffDouble;
}

std::optional<PropertyValue> valueOf(const Exiv2::Exifdatum& datum) {
    const auto type = datum.typeId();
    const long count = datum.count();
    if (isNumeric(type)) {
        if (count < 1 || count > kMaximumNumbers) return std::nullopt;
        std::vector<double> numbers;
        for (long i = 0; i < count; ++i) {
            const auto number = numberAt(datum, i);
            if (!number) return std::nullopt;
            numbers.push_back(*number);
        }
        if (count > 1) return numbers;
        if (isWhole(type)) return std::int64_t(numbers[0]);
        return numbers[0];
    }
    if (type == Exiv2::asciiString) return asUtf8(datum.toString());
    if (type == Exiv2::comment) {
        const auto* comment = dynamic_cast<const Exiv2::CommentValue*>(&datum.value());
        return comment ? std::optional<PropertyValue>(asUtf8(comment->comment())) : std::nullopt;
    }
    if (type == Exiv2::undefined && count == 1) return std::int64_t(datum.toLong(0));
    if (type == Exiv2::undefined && count == 4 && datum.groupName() == "Photo") {
        std::string text; // versions: four characters
        for (long i = 0; i < count; ++i)
            text.push_back(char(datum.toLong(i)));
        const bool isPlain =
            std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= 'z'; });
        if (isPlain) return text;
    }
    return std::nullopt;
}

std::string exifName(const Exiv2::Exifdatum& datum) {
    for (const Name& known : kExifNames) {
        if (known.tag == datum.tag()) return known.name;
    }
    return datum.tagName();
}

void setIfAbsent(PropertyDictionary& dictionary, const std::string& key, PropertyValue value) {
    if (!dictionary.find(key)) dictionary.set(key, std::move(value));
}

// Degrees, minutes, seconds; missing parts count as 0.
std::optional<double> degrees(const Exiv2::Exifdatum& datum) {
    double sum = 0, unit = 1;
    if (datum.count() < 1) return std::nullopt;
    for (long i = 0; i < std::min(datum.count(), 3L); ++i, unit /= 60) {
        const auto part = numberAt(datum, i);
        if (!part && i == 0) return std::nullopt;
        sum += part.value_or(0) * unit;
    }
    return sum;
}

void addGps(const Exiv2::Exifdatum& datum, PropertyDictionary& gps) {
    std::string key = datum.tagName();
    if (key.starts_with("GPS")) key.erase(0, 3);
    const bool isPosition = key == "Latitude" || key == "Longitude";
    if (isPosition && isRational(datum.typeId())) {
        const double limit = key == "Latitude" ? 90 : 180;
        if (const auto value = degrees(datum); value && *value >= 0 && *value <= limit) {
            setIfAbsent(gps, key, *value);
        }
        return;
    }
    if (isPosition) return;
    if (auto value = valueOf(datum)) setIfAbsent(gps, key, std::move(*value));
}

// The lens as the maker note tells it; none where the library only prints a number.
std::optional<std::string> makerLens(const Exiv2::ExifData& data) {
    const auto written = data.findKey(Exiv2::ExifKey("Exif.Canon.LensModel"));
    const auto at = written != data.end() ? written : Exiv2::lensName(data);
    if (at == data.end() || at->groupName() == "Photo") return std::nullopt;
    std::string name = asUtf8(at->print(&data));
    const bool hasLetters = std::any_of(name.begin(), name.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    });
    if (!hasLetters || name.starts_with("(") || name.starts_with("n/a") ||
        name.starts_with("Unknown") || name.starts_with("None") || name.starts_with("Manual")) {
        return std::nullopt;
    }
    return name;
}

// Makers that leave the EXIF sensitivity out keep it in their own note, in codes that only the
// library's printed form resolves.
std::optional<std::int64_t> makerSensitivity(const Exiv2::ExifData& data) {
    const auto at = Exiv2::isoSpeed(data);
    if (at == data.end()) return std::nullopt;
    const std::string text = at->print(&data);
    std::int64_t value = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), value);
    if (parsed.ec != std::errc() || value <= 0 || value >= 10'000'000) return std::nullopt;
    return value;
}

std::optional<double> numberOf(const Exiv2::ExifData& data, const char* key, long index = 0) {
    const auto at = data.findKey(Exiv2::ExifKey(key));
    if (at == data.end() || at->count() <= index) return std::nullopt;
    return numberAt(*at, index);
}

// Early Canon files have no EXIF block, only the maker's records: times in signed 1/32 stops, which
// the library takes as unsigned ones, and focal lengths in units of their own.
void addCanonRecords(const Exiv2::ExifData& data, PropertyDictionary& exif) {
    if (const auto units = numberOf(data, "Exif.CanonCs.Lens", 2); units && *units > 0) {
        if (const auto focal = numberOf(data, "Exif.Canon.FocalLength", 1); focal && *focal > 0) {
            setIfAbsent(exif, "FocalLength", *focal / *units);
        }
    }
    const auto speed = numberOf(data, "Exif.CanonSi.ShutterSpeedValue");
    const auto time = exif.number("ExposureTime");
    if (speed && *speed >= 32768 && time && *time == 1) {
        exif.set("ExposureTime", std::exp2((65536 - *speed) / 32));
    }
}

} // namespace

void addExif(const Exiv2::ExifData& data, PhotoProperties& properties) {
    for (const Exiv2::Exifdatum& datum : data) {
        const std::string group = datum.groupName();
        if (group == "GPSInfo") {
            addGps(datum, properties.gps);
        } else if (group == "Photo") {
            if (auto value = valueOf(datum))
                properties.exif.set(exifName(datum), std::move(*value));
        } else if (group == "Image") {
            if (auto value = valueOf(datum))
                setIfAbsent(properties.tiff, datum.tagName(), std::move(*value));
        }
    }
    for (const std::uint16_t tag : kExifTagsInImage) {
        const auto at = std::find_if(data.begin(), data.end(), [&](const auto& d) {
            return d.tag() == tag && d.groupName() == "Image";
        });
        if (at == data.end()) continue;
        if (auto value = valueOf(*at))
            setIfAbsent(properties.exif, exifName(*at), std::move(*value));
    }
    if (!properties.exif.find("ISOSpeedRatings")) {
        if (const auto iso = makerSensitivity(data)) properties.exif.set("ISOSpeedRatings", *iso);
    }
    addCanonRecords(data, properties.exif);
    if (auto lens = makerLens(data))
        setIfAbsent(properties.auxiliary, "LensModel", std::move(*lens));
    for (const char* key : {"Exif.Photo.BodySerialNumber", "Exif.Image.CameraSerialNumber"}) {
        const auto at = data.findKey(Exiv2::ExifKey(key));
        if (at == data.end()) continue;
        if (auto value = valueOf(*at))
            setIfAbsent(properties.auxiliary, "SerialNumber", std::move(*value));
    }
}

void addXmp(const Exiv2::XmpData& data, PhotoProperties& properties) {
    std::optional<std::string> lens;
    for (const Exiv2::Xmpdatum& datum : data) {
        if (datum.groupName() != "aux") continue;
        std::string text = asUtf8(datum.toString());
        if (datum.tagName() == "Lens") lens = text;
        properties.auxiliary.set(datum.tagName(), std::move(text));
    }
    // A name that a program wrote down beats the one looked up from the maker's number.
    if (lens) properties.auxiliary.set("LensModel", *lens);
}

void addIptc(const Exiv2::IptcData& data, PhotoProperties& properties) {
    for (const Exiv2::Iptcdatum& datum : data) {
        const std::string key = datum.tagName();
        std::string text = asUtf8(datum.toString());
        if (const auto before = properties.iptc.text(key)) {
            if (before->size() > kMaximumText) continue;
            text = *before + ", " + text;
        }
        properties.iptc.set(key, std::move(text));
    }
}

} // namespace kelvaro
