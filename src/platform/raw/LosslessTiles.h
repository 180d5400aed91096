// The mosaic, or the three colours, of a DNG whose tiles are lossless JPEG, decoded on all cores.
#pragma once

#include "base/Cancellation.h"
#include "platform/raw/DngTags.h"
#include "platform/raw/TiffDirectory.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace kelvaro {

// The samples row by row, those of a pixel side by side, the linearisation table applied. None when
// the file is of another kind, when any tile is damaged or unusual, and when cancelled. `read` must
// stand calls from several threads. Throws std::bad_alloc.
std::optional<std::vector<std::uint16_t>>
decodeLosslessTiles(const DngTags& tags, const ReadAt& read, const Cancellation* cancellation);

} // namespace kelvaro
