// Finding the largest ordinary JPEG inside a RAW file, by looking at places where one may be.
#pragma once

#include "platform/raw/TiffDirectory.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace kelvaro {

struct JpegPlace {
    std::uint64_t offset = 0, bytes = 0;
    std::int64_t pixels = 0;
};

// The place, when a baseline or progressive JPEG of 1 … 8 bits per sample begins there (lossless
// ones are RAW data). `bytes` is clipped to the end of the file.
std::optional<JpegPlace> jpegAt(const ReadAt& read, std::uint64_t offset, std::uint64_t bytes,
                                std::uint64_t fileBytes);

// Where the directories of a TIFF-based RAW file name JPEG data; unchecked.
std::vector<JpegPlace> jpegCandidates(const TiffFile& file);

} // namespace kelvaro
