// Computes one tile of a planned render: every step of the plan over the rectangle that is needed
// of it, in order, in memory of the worker's pool.
#pragma once

#include "platform/imaging/RenderPlan.h"
#include "platform/imaging/TilePool.h"

namespace kelvaro {

// The finished tiles, one for each image of the plan, cover exactly `output`; where that reaches
// outside an image it is transparent. Throws std::bad_alloc.
std::vector<Tile> evaluateTiles(const RenderPlan& plan, const PixelRect& output, TilePool& pool);

} // namespace kelvaro
