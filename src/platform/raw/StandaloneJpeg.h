// Makes an embedded JPEG stand for itself: what the RAW file knows of it, its orientation and its
// colours, is written into it as an EXIF segment and an ICC profile.
#pragma once

#include "platform/raw/EmbeddedJpeg.h"

#include <cstddef>
#include <vector>

namespace kelvaro {

// `jpeg` is the file as it stands at `place`, at least two bytes. `orientation` is used where the
// place has none; its colour becomes a profile unless it is sRGB or the JPEG has one. Throws
// std::bad_alloc.
std::vector<std::byte> standaloneJpeg(std::vector<std::byte> jpeg, const JpegPlace& place,
                                      int orientation);

} // namespace kelvaro
