// Finding the ordinary JPEG pictures inside a RAW file, by looking at places where one may be, and
// what each says about itself.
#pragma once

#include "base/Geometry.h"
#include "platform/raw/TiffDirectory.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <vector>

namespace kelvaro {

// Colours that cameras and converters give previews without a profile.
enum class PreviewColour { sRgb, adobeRgb, proPhotoRgb };

struct JpegPlace {
    std::uint64_t offset = 0, bytes = 0;
    PixelSize size;                      // as stored
    std::optional<int> orientation;      // EXIF's, when it is written down
    std::optional<PreviewColour> colour; // likewise
    bool hasProfile = false;             // an ICC profile inside

    int longerSide() const { return std::max(size.width, size.height); }
};

// The place, when a baseline or progressive JPEG of 1 … 8 bits per sample begins there (lossless
// ones are RAW data). `bytes` is clipped to the end of the file. What the JPEG itself says comes
// before what `named` says.
std::optional<JpegPlace> jpegAt(const ReadAt& read, const JpegPlace& named,
                                std::uint64_t fileBytes);

// Where the directories of a TIFF-based RAW file name JPEG data; unchecked.
std::vector<JpegPlace> jpegCandidates(const TiffFile& file);

// What the EXIF directories say of the photo as a whole (ColorSpace, and the interoperability index
// R03 of DCF 2.0 for Adobe RGB); none where they leave it open.
std::optional<PreviewColour> statedColour(const TiffFile& file);

// The smallest with at least so many pixels along its longer side, else the largest.
const JpegPlace* chosenJpeg(const std::vector<JpegPlace>& places, int atLeastPx);

} // namespace kelvaro
