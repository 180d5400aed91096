// Everything the information panel tells of one photo, and the rows in which it is shown. Plain
// values; what the file does not record is absent and has no row.
#pragma once

#include "base/Geometry.h"
#include "base/Result.h"
#include "library/Photo.h"
#include "library/PhotoMeta.h"
#include "platform/PhotoProperties.h"
#include "platform/TextRules.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvaro {

struct PhotoInfo {
    std::optional<double> aperture; // f-number
    std::optional<double> shutter;  // seconds
    std::optional<int> iso;
    std::optional<double> focal, focal35; // mm
    std::optional<double> bias;           // stops
    std::optional<std::string> camera, lens, program, metering, flash, whiteBalance;
    std::optional<CaptureTime> taken;
    std::optional<PixelSize> dimensions; // px, upright
    std::optional<double> megapixels;
    std::optional<std::string> colour, format;
    std::optional<std::int64_t> size; // bytes
    std::optional<FileTime> modified, created;
    std::optional<double> latitude, longitude; // degrees north and east
    std::optional<double> altitude;            // metres above the sea
    std::optional<std::string> software, artist, copyright;

    bool operator==(const PhotoInfo&) const = default;
};

// Blocks on the disk.
Result<PhotoInfo> readPhotoInfo(PropertyReader& reader, const Photo& photo);
PhotoInfo makePhotoInfo(const PhotoProperties& properties, const PhotoColour& colour,
                        const Photo& photo);

// "Canon RAW (CR3)"; the bare extension, in capitals, where it has no label.
std::string formatText(std::string_view extension);

struct InfoRow {
    std::string_view key;     // the field's name
    std::string_view section; // "Exposure", "Camera" …
    std::string_view label;   // "Focal length"
    std::string text;         // "35 mm"

    bool operator==(const InfoRow&) const = default;
};

// In the order of the fields; rows of one section stand together. None when the photo's own
// properties tell nothing: then the panel says `noInformation`.
std::vector<InfoRow> infoRows(const PhotoInfo& info, const TextRules& rules,
                              const LocalCalendar& calendar);

namespace texts {
inline constexpr std::string_view noInformation = "No information available";
// After the file name, while the panel's values are being read.
inline constexpr std::string_view readingInfo = " · reading photo info…";
} // namespace texts

} // namespace kelvaro
