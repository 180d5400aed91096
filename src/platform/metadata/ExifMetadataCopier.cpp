#include "platform/metadata/ExifMetadataCopier.h"

#include "platform/metadata/ExifDictionaries.h"
#include "platform/metadata/ExifLibrary.h"
#include "platform/metadata/HeifContainer.h"

#include <exiv2/convert.hpp>
#include <exiv2/exiv2.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <string_view>

namespace kelvaro {

namespace {

constexpr std::size_t kLargestExif = 65527; // the payload of a JPEG segment
constexpr long kLargestSpareValue = 1024;   // bytes; larger values go first where room is short

// The TIFF properties that describe the photo rather than how its pixels are stored.
constexpr std::array<std::uint16_t, 12> kTiffTags{
    0x010d, // DocumentName
    0x010e, // ImageDescription
    0x010f, // Make
    0x0110, // Model
    0x011a, // XResolution
    0x011b, // YResolution
    0x0128, // ResolutionUnit
    0x0131, // Software
    0x0132, // DateTime
    0x013b, // Artist
    0x013c, // HostComputer
    0x8298, // Copyright
};
// What TIFF/EP and DNG keep in the first directory although it belongs to EXIF.
constexpr std::array<std::uint16_t, 14> kExifTagsInImage{0x829a, 0x829d, 0x8822, 0x8827, 0x9003,
                                                         0x9004, 0x9204, 0x9207, 0x9208, 0x9209,
                                                         0x920a, 0xa405, 0xa432, 0xa434};
// EXIF properties of the stored file, not of the photo.
constexpr std::array<std::uint16_t, 5> kStoredFileTags{
    0x927c, // MakerNote as one block; its parts are looked at one by one
    0xa001, // ColorSpace
    0xa002, // PixelXDimension
    0xa003, // PixelYDimension
    0xa005, // the interoperability directory, which names the file's own colour space
};

template<std::size_t n>
bool contains(const std::array<std::uint16_t, n>& tags, std::uint16_t tag) {
    return std::find(tags.begin(), tags.end(), tag) != tags.end();
}

// A property inside the maker note. The library's own group "MakerNote" tells where the note lay
// and how it was written.
bool isMakersPart(const Exiv2::Exifdatum& datum) {
    return Exiv2::ExifTags::isMakerGroup(datum.groupName()) && datum.groupName() != "MakerNote";
}

bool isMakerNote(const Exiv2::Exifdatum& datum) {
    return isMakersPart(datum) || datum.groupName() == "MakerNote";
}

// Pictures inside maker notes, and where they lie: they show the photo as the camera made it.
bool isPreview(const Exiv2::Exifdatum& datum) {
    const std::string group = datum.groupName(), name = datum.tagName();
    return group.find("Preview") != std::string::npos || name.find("Preview") == 0 ||
           name.find("Thumbnail") == 0;
}

// Nothing in such a note is counted from outside it.
bool standsAlone(const Exiv2::Exifdatum& note) {
    static constexpr std::string_view kApple{"Apple iOS\0", 10};
    std::vector<Exiv2::byte> bytes(std::size_t(note.size()));
    note.copy(bytes.data(), Exiv2::littleEndian);
    return bytes.size() > kApple.size() &&
           std::equal(kApple.begin(), kApple.end(), bytes.begin(),
                      [](char a, Exiv2::byte b) { return Exiv2::byte(a) == b; });
}

struct PhotoData {
    Exiv2::ExifData exif;
    Exiv2::IptcData iptc;
};

PhotoData readData(const std::filesystem::path& photo) {
    PhotoData data;
    guarded([&] {
        const auto image = Exiv2::ImageFactory::open(photo.string());
        // A block that breaks off leaves what was read before it.
        guarded([&] { image->readMetadata(); });
        data.exif = image->exifData();
        data.iptc = image->iptcData();
    });
    if (!data.exif.empty()) return data;
    guarded([&] {
        const auto heif = readHeif(photo);
        if (!heif || heif->exif.empty()) return;
        Exiv2::ExifParser::decode(data.exif,
                                  reinterpret_cast<const Exiv2::byte*>(heif->exif.data()),
                                  std::uint32_t(heif->exif.size()));
    });
    return data;
}

// The photo's own properties, maker notes included, without those of its file.
Exiv2::ExifData photoProperties(const Exiv2::ExifData& all) {
    Exiv2::ExifData kept;
    const bool hasParts = std::any_of(all.begin(), all.end(), isMakersPart);
    for (const Exiv2::Exifdatum& datum : all) {
        const std::string group = datum.groupName();
        const std::uint16_t tag = datum.tag();
        bool keeps = false;
        if (group == "Image") {
            keeps = contains(kTiffTags, tag);
            const Exiv2::ExifKey inExif(tag, "Photo");
            if (contains(kExifTagsInImage, tag) && all.findKey(inExif) == all.end())
                kept.add(inExif, &datum.value());
        } else if (group == "Photo") {
            keeps = !contains(kStoredFileTags, tag) ||
                    (tag == 0x927c && (hasParts || standsAlone(datum)));
        } else if (group == "GPSInfo") {
            keeps = true;
        } else if (isMakerNote(datum)) {
            keeps = !isPreview(datum);
        }
        if (keeps && datum.size() > 0) kept.add(datum);
    }
    return kept;
}

// What the photo says only in ways of its maker's, which may not travel, in the standard's.
void addStandardForms(const Exiv2::ExifData& all, Exiv2::ExifData& kept) {
    PhotoProperties known;
    addExif(all, known);
    const auto add = [&](const char* key, const char* property, auto set) {
        const auto value = known.exif.number(property);
        if (value && *value > 0 && kept.findKey(Exiv2::ExifKey(key)) == kept.end()) set(*value);
    };
    add("Exif.Photo.ISOSpeedRatings", "ISOSpeedRatings", [&](double iso) {
        if (iso < 65536) kept["Exif.Photo.ISOSpeedRatings"] = std::uint16_t(iso);
    });
    add("Exif.Photo.FocalLength", "FocalLength", [&](double millimetres) {
        kept["Exif.Photo.FocalLength"] =
            Exiv2::URational(std::uint32_t(std::lround(millimetres * 1000)), 1000);
    });
}

void describePicture(Exiv2::ExifData& exif, PixelSize size, OutputSpace space) {
    exif["Exif.Image.Orientation"] = std::uint16_t(1);
    exif["Exif.Photo.PixelXDimension"] = std::uint32_t(size.width);
    exif["Exif.Photo.PixelYDimension"] = std::uint32_t(size.height);
    // The standard knows sRGB; everything else is "uncalibrated" and told by the profile.
    exif["Exif.Photo.ColorSpace"] = std::uint16_t(space == OutputSpace::sRGB ? 1 : 0xffff);
    const Exiv2::ExifKey version("Exif.Photo.ExifVersion");
    if (exif.findKey(version) == exif.end()) exif[version.key()] = "48 50 51 50"; // 0232
}

void removeIf(Exiv2::ExifData& exif, const std::function<bool(const Exiv2::Exifdatum&)>& matches) {
    for (auto at = exif.begin(); at != exif.end();)
        at = matches(*at) ? exif.erase(at) : std::next(at);
}

void removeMakerNote(Exiv2::ExifData& exif) {
    removeIf(exif, [](const Exiv2::Exifdatum& datum) {
        return isMakerNote(datum) || (datum.groupName() == "Photo" && datum.tag() == 0x927c);
    });
}

Exiv2::Blob encoded(const Exiv2::ExifData& exif) {
    Exiv2::Blob blob;
    Exiv2::ExifParser::encode(blob, Exiv2::littleEndian, exif);
    return blob;
}

// What a reader of the block will find in the maker note is what the photo had.
bool makerNoteSurvives(const Exiv2::Blob& blob, const Exiv2::ExifData& wanted) {
    Exiv2::ExifData found;
    Exiv2::ExifParser::decode(found, blob.data(), std::uint32_t(blob.size()));
    bool hasParts = false;
    for (const Exiv2::Exifdatum& datum : found) {
        if (!isMakersPart(datum)) continue;
        const auto original = wanted.findKey(Exiv2::ExifKey(datum.key()));
        if (original != wanted.end() && original->toString() != datum.toString()) return false;
        hasParts = true;
    }
    return hasParts || std::none_of(wanted.begin(), wanted.end(), isMakersPart);
}

Exiv2::Blob exifBlock(Exiv2::ExifData exif) {
    Exiv2::Blob blob;
    const bool whole = guarded([&] { blob = encoded(exif); }) && blob.size() <= kLargestExif &&
                       makerNoteSurvives(blob, exif);
    if (whole) return blob;
    removeMakerNote(exif);
    if (guarded([&] { blob = encoded(exif); }) && blob.size() <= kLargestExif) return blob;
    removeIf(exif, [](const Exiv2::Exifdatum& datum) { return datum.size() > kLargestSpareValue; });
    if (guarded([&] { blob = encoded(exif); }) && blob.size() <= kLargestExif) return blob;
    return {};
}

template<class Bytes>
std::vector<std::byte> bytesOf(const Bytes* data, std::size_t count) {
    const auto* first = reinterpret_cast<const std::byte*>(data);
    return {first, first + count};
}

void addIptc(const Exiv2::IptcData& iptc, EmbeddedMetadata& metadata) {
    if (iptc.empty()) return;
    guarded([&] {
        const Exiv2::DataBuf records = Exiv2::IptcParser::encode(iptc);
        metadata.iptc = bytesOf(records.pData_, std::size_t(records.size_));
    });
    guarded([&] {
        Exiv2::XmpData xmp;
        Exiv2::copyIptcToXmp(iptc, xmp);
        if (Exiv2::XmpParser::encode(metadata.xmp, xmp) != 0) metadata.xmp.clear();
    });
}

} // namespace

ExifMetadataCopier::ExifMetadataCopier() {
    startExifLibrary();
}

Result<EmbeddedMetadata> ExifMetadataCopier::copy(const std::filesystem::path& photo,
                                                  PixelSize size, OutputSpace space) {
    const auto quoted = "“" + photo.filename().string() + "”";
    std::error_code error;
    const auto status = std::filesystem::status(photo, error);
    if (!std::filesystem::exists(status))
        return fail(FailureKind::notFound, quoted + " couldn't be read: it isn't there.");
    if (!std::filesystem::is_regular_file(status))
        return fail(FailureKind::unreadable, quoted + " couldn't be read: it is not a file.");

    const PhotoData data = readData(photo);
    EmbeddedMetadata metadata;
    guarded([&] {
        Exiv2::ExifData exif = photoProperties(data.exif);
        addStandardForms(data.exif, exif);
        describePicture(exif, size, space);
        const Exiv2::Blob blob = exifBlock(std::move(exif));
        metadata.exif = bytesOf(blob.data(), blob.size());
    });
    addIptc(data.iptc, metadata);
    return metadata;
}

} // namespace kelvaro
