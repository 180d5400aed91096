// The operations of the fast executor that look at more than one pixel of their input, over one
// tile. `in` covers what inputRequirement asked for, inside the input's extent.
#pragma once

#include "platform/imaging/RenderPlan.h"
#include "platform/imaging/TilePool.h"

namespace kelvaro {

// Writes the first `planes` colours, and alpha where there is one; `tables` cover out.rect.
void stretchTile(const StretchTables& tables, int planes, const ConstTileView& in,
                 const TileView& out, TilePool& pool);
// `extent` is the input image's.
void affineTile(const AffineOperation& op, const PixelRect& extent, const ConstTileView& in,
                const TileView& out);
// `in` covers out.rect with `radius` pixels more on every side. Writes what stretchTile does.
void boxBlurTile(int radius, int planes, const ConstTileView& in, const TileView& out);
void clampTile(const ConstTileView& in, const TileView& out);

} // namespace kelvaro
