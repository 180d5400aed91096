// Computes one tile of a planned render: every step of the plan over the rectangle that is needed
// of it, in order, in memory of the worker's pool.
#pragma once

#include "platform/imaging/RenderPlan.h"
#include "platform/imaging/TilePool.h"

#include <functional>

namespace kelvaro {

// One view for each image of the plan, over exactly the rectangle that was asked for; where that
// reaches outside an image it is transparent. They last as long as the call.
using UseTiles = std::function<void(const std::vector<ConstTileView>&)>;

// Throws std::bad_alloc.
void evaluateTiles(const RenderPlan& plan, const PixelRect& output, TilePool& pool,
                   const UseTiles& use);

} // namespace kelvaro
