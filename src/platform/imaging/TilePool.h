// Recycled tile memory of one worker: taking and giving back tiles of the same few sizes costs no
// allocation after the first tiles of a render.
#pragma once

#include "platform/Raster.h"

#include <memory>
#include <mutex>
#include <vector>

namespace kelvaro {

class TilePool {
public:
    AlignedFloats take(std::size_t floats); // at least so many; throws std::bad_alloc
    void giveBack(AlignedFloats memory);
    // Keeps at most so many floats, the smallest blocks.
    void shrinkTo(std::size_t floats);

private:
    std::vector<AlignedFloats> free_; // smallest first
};

// The pools of a renderer's workers between its renders: a picture that is drawn in strips would
// touch new memory in each of them. Any thread.
class TilePools {
public:
    // A pool until the end of its scope.
    class Lease {
    public:
        explicit Lease(TilePools& pools);
        ~Lease();
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;
        TilePool& operator*() const { return *pool_; }

    private:
        TilePools& pools_;
        std::unique_ptr<TilePool> pool_;
    };

private:
    static constexpr std::size_t kPoolsKept = 16, kFloatsKept = std::size_t(1) << 20; // of each
    std::mutex lock_;
    std::vector<std::unique_ptr<TilePool>> free_;
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
