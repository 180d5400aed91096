// The small uncompressed pictures that some RAW files hold where others have a JPEG.
#pragma once

#include "platform/ImageFiles.h"
#include "platform/raw/TiffDirectory.h"

#include <optional>

namespace kelvaro {

// The largest 8-bit RGB picture in one uncompressed strip that the directories name, as linear
// light, not turned upright; none where there is none. Its colours are taken as sRGB. `fileBytes`
// is the length of the file.
std::optional<DecodedBitmap> embeddedBitmap(const TiffFile& file, const ReadAt& read,
                                            std::uint64_t fileBytes);

} // namespace kelvaro
