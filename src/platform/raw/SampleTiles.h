// The mosaic, or the three colours, of a DNG whose strips or tiles are lossless JPEG or not
// compressed at all, decoded on all cores.
#pragma once

#include "base/Cancellation.h"
#include "platform/raw/DngTags.h"
#include "platform/raw/StoredSamples.h"
#include "platform/raw/TiffDirectory.h"

#include <optional>

namespace kelvaro {

// The samples row by row, those of a pixel side by side, the linearisation table applied. None when
// the file is of another kind, when any part is damaged or unusual, and when cancelled. `read` must
// stand calls from several threads. Throws std::bad_alloc.
std::optional<StoredSamples> decodeTiles(const DngTags& tags, const ReadAt& read,
                                         const Cancellation* cancellation);

} // namespace kelvaro
