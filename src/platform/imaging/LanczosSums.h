// One tile of a Lanczos resampling that is fed with its input block by block, so that a large
// reduction never holds more of the input than the block at hand. Each input row is added to the
// sums of the output lines that it reaches; at the end the sums are filtered along x. Used by one
// worker at a time.
#pragma once

#include "platform/imaging/RenderPlan.h"
#include "platform/imaging/TilePool.h"

namespace kelvaro {

class LanczosSums {
public:
    // `tables` cover `output`; they and the pool must outlive the sums. Throws std::bad_alloc.
    LanczosSums(const LanczosTables& tables, const PixelRect& output, bool hasAlpha,
                TilePool& pool);

    // The input pixels that the tile is made of, inside the input's extent.
    const PixelRect& input() const { return input_; }
    // Blocks cover input() once, inside it, those of one column range from the bottom up: then the
    // sums are the same, bit for bit, whatever the blocks' sizes. Throws std::bad_alloc.
    void add(const ConstTileView& block);
    // `out` is the output tile. Throws std::bad_alloc.
    void writeTo(const TileView& out) const;

private:
    const LanczosTables& tables_;
    PixelRect output_, input_;
    TilePool& pool_;
    Tile sums_; // input columns × output lines, the lowest line first
};

} // namespace kelvaro
