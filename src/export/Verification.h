// Whether a written file shows what was rendered: size, profile, and pixels as near as the codec
// can hold them. Pure functions, any thread.
#pragma once

#include "platform/ImageFiles.h"

namespace kelvaro {

class RenderedStrips;

// Fails with what is wrong with the decoded file, in words for a log. Pixels of lossless formats
// must be equal. Of JPEG and HEIC, whose single pixels may be far off, every block of 32 × 32 must
// have the rendered block's mean colour, and not be flat where that is not.
Result<void> compare(const Bitmap& rendered, const EncodeSettings& settings,
                     const DecodedBitmap& read);
// The same for a lossy file whose strips were all handed out; what has to be looked at again is
// rendered again, and fails as that does.
Result<void> compare(const RenderedStrips& rendered, const EncodeSettings& settings,
                     const DecodedBitmap& read);

} // namespace kelvaro
