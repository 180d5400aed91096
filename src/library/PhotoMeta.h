// The small record of a photo's capture that the library keeps of every photo: for sorting,
// searching, filtering and statistics. A plain value. Values that the file does not record are
// absent; values that cannot be (an aperture of 0) count as not recorded.
#pragma once

#include "library/Photo.h"
#include "platform/LocalCalendar.h"
#include "platform/PhotoProperties.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace kelvaro {

struct PhotoMeta {
    static constexpr int currentSchemaVersion = 1;

    std::optional<FileTime> taken; // the instant, to the second
    int width = 0, height = 0;     // px, upright; 0 when unknown
    FileTime mtime;                // of the file when the record was made
    std::int64_t size = 0;         // bytes, of the file when the record was made
    int schemaVersion = currentSchemaVersion;
    std::optional<std::string> camera; // the model
    std::optional<std::string> lens;
    std::optional<double> focalLength; // mm, as recorded
    std::optional<int> iso;
    std::optional<double> aperture; // f-number
    std::optional<double> shutter;  // seconds
    std::optional<double> focal35;  // mm, equivalent on 36 × 24 mm

    std::optional<std::string> make; // of the camera
    // What the clock on the wall showed at the capture, as seconds since 1970 as if it showed UTC.
    std::optional<std::int64_t> takenOnWall;
    // How far that clock was ahead of UTC, where the file tells; seconds.
    std::optional<int> takenOffset;

    bool operator==(const PhotoMeta&) const = default;
};

using SharedMeta = std::shared_ptr<const PhotoMeta>;

// Whether the record still describes that file.
bool isValid(const PhotoMeta& meta, const Photo& photo);

PhotoMeta makePhotoMeta(const PhotoProperties& properties, const Photo& photo,
                        const LocalCalendar& calendar);

// "Make Model", without a make that the model repeats ("NIKON CORPORATION", "NIKON D300").
std::optional<std::string> cameraName(const std::optional<std::string>& make,
                                      const std::optional<std::string>& model);

// When a photo was taken as its file tells it: DateTimeOriginal, else the TIFF DateTime.
struct CaptureTime {
    std::int64_t onWall = 0;   // seconds as if the wall clock showed UTC
    std::optional<int> offset; // seconds ahead of UTC

    bool operator==(const CaptureTime&) const = default;
};
std::optional<CaptureTime> captureTime(const PhotoProperties& properties);
// Without an offset the reading is one of the user's own time zone.
FileTime instantOf(const CaptureTime& time, const LocalCalendar& calendar);

} // namespace kelvaro
