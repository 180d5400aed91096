// Recycled tile memory of one worker: taking and giving back tiles of the same few sizes costs no
// allocation after the first tiles of a render.
#pragma once

#include "platform/Raster.h"

#include <vector>

namespace kelvaro {

class TilePool {
public:
    AlignedFloats take(std::size_t floats); // at least so many; throws std::bad_alloc
    void giveBack(AlignedFloats memory);

private:
    std::vector<AlignedFloats> free_; // smallest first
};

// Planar pixels over a rectangle, rows padded and aligned like a Raster's. Gives its memory back to
// the pool, which must outlive it.
class Tile {
public:
    Tile() = default;
    Tile(TilePool& pool, const PixelRect& rect, bool hasAlpha);
    Tile(Tile&& other) noexcept { *this = std::move(other); }
    Tile& operator=(Tile&& other) noexcept;
    ~Tile();

    const TileView& view() const { return view_; }
    const PixelRect& rect() const { return view_.rect; }
    bool isEmpty() const { return view_.rect.isEmpty(); }

private:
    TilePool* pool_ = nullptr;
    AlignedFloats memory_;
    TileView view_;
};

} // namespace kelvaro
