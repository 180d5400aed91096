#include "platform/raw/Workshop.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace kelvaro {

Workshop::Workshop()
    : rows(std::size_t(kStride) * kHeight * (kMaximumChannels + 1)),
      line(std::size_t(3) * kStride) {}

// Null where a new one is to be made.
std::unique_ptr<Workshop> WorkshopPool::taken(const SensorRect& tile, bool goesOn) {
    const std::lock_guard guard(lock_);
    const auto isIdle = [](const auto& shop) { return shop->finished.width == 0; };
    const auto isAbove = [&](const auto& shop) {
        const FinishedColumns& f = shop->finished;
        return f.width == tile.width && f.left == tile.left && f.end == tile.top;
    };
    auto found = std::find_if(free_.rbegin(), free_.rend(), isAbove);
    if (!goesOn || found == free_.rend())
        found = std::find_if(free_.rbegin(), free_.rend(), isIdle);
    if (found == free_.rend()) {
        if (made_ < wanted_ || free_.empty()) {
            ++made_;
            return nullptr;
        }
        found = std::prev(free_.rend()); // the one that has waited longest
    }
    std::unique_ptr<Workshop> shop = std::move(*found);
    free_.erase(std::next(found).base());
    return shop;
}

WorkshopPool::Lease::Lease(WorkshopPool& pool, const SensorRect& tile, bool goesOn)
    : pool_(pool), workshop_(pool.taken(tile, goesOn)) {
    if (!workshop_) workshop_ = std::make_unique<Workshop>();
    const FinishedColumns& f = workshop_->finished;
    if (!goesOn || f.width != tile.width || f.left != tile.left || f.end != tile.top)
        workshop_->finished = {};
}

WorkshopPool::Lease::~Lease() {
    const std::lock_guard guard(pool_.lock_);
    try {
        pool_.free_.push_back(std::move(workshop_));
    } catch (const std::bad_alloc&) { // it is made anew where it is needed again
    }
}

} // namespace kelvaro
