// Whether a written file shows what was rendered: size, profile, and pixels as near as the codec
// can hold them. Pure functions, any thread.
#pragma once

#include "platform/ImageFiles.h"

#include <optional>
#include <string>

namespace kelvaro {

// What is wrong with the decoded file, in words for a log; none where it is right. Pixels of
// lossless formats must be equal. Of JPEG and HEIC, whose single pixels may be far off, every block
// of 32 × 32 must have the rendered block's mean colour, and not be flat where that is not.
std::optional<std::string> mismatch(const Bitmap& rendered, const EncodeSettings& settings,
                                    const DecodedBitmap& read);

} // namespace kelvaro
