#include "platform/imaging/TilePool.h"

#include <algorithm>
#include <utility>

namespace kelvaro {

AlignedFloats TilePool::take(std::size_t floats) {
    const auto found = std::find_if(free_.begin(), free_.end(),
                                    [&](const auto& memory) { return memory.size() >= floats; });
    if (found == free_.end()) return AlignedFloats(floats);
    AlignedFloats memory = std::move(*found);
    free_.erase(found);
    return memory;
}

void TilePool::giveBack(AlignedFloats memory) {
    const auto place =
        std::lower_bound(free_.begin(), free_.end(), memory,
                         [](const auto& a, const auto& b) { return a.size() < b.size(); });
    free_.insert(place, std::move(memory));
}

void TilePool::shrinkTo(std::size_t floats) {
    std::size_t kept = 0;
    for (std::size_t i = 0; i < free_.size(); ++i) {
        kept += free_[i].size();
        if (kept > floats) free_.resize(i);
    }
}

TilePools::Lease::Lease(TilePools& pools) : pools_(pools) {
    {
        const std::lock_guard guard(pools.lock_);
        if (!pools.free_.empty()) {
            pool_ = std::move(pools.free_.back());
            pools.free_.pop_back();
        }
    }
    if (!pool_) pool_ = std::make_unique<TilePool>();
}

TilePools::Lease::~Lease() {
    pool_->shrinkTo(kFloatsKept);
    const std::lock_guard guard(pools_.lock_);
    try {
        if (pools_.free_.size() < kPoolsKept) pools_.free_.push_back(std::move(pool_));
    } catch (const std::bad_alloc&) { // it is made anew where it is needed again
    }
}

Tile::Tile(TilePool& pool, const PixelRect& rect, bool hasAlpha) : pool_(&pool) {
    const std::ptrdiff_t stride =
        (std::ptrdiff_t(rect.width) + kRowGroup - 1) / kRowGroup * kRowGroup;
    const std::ptrdiff_t plane = stride * rect.height;
    const int planes = hasAlpha ? 4 : 3;
    // One group of slack: vector code may look one vector past the last row.
    memory_ = pool.take(std::size_t(plane) * std::size_t(planes) + kRowGroup);
    view_ = {rect, {}, stride};
    for (int i = 0; i < planes; ++i)
        view_.planes[i] = memory_.data() + plane * i;
}

Tile& Tile::operator=(Tile&& other) noexcept {
    std::swap(pool_, other.pool_);
    std::swap(memory_, other.memory_);
    std::swap(view_, other.view_);
    return *this;
}

Tile::~Tile() {
    if (memory_.size() > 0) pool_->giveBack(std::move(memory_));
}

} // namespace kelvaro
