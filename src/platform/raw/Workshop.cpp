#include "platform/raw/Workshop.h"

#include <utility>

namespace kelvaro {

Workshop::Workshop() : rows(std::size_t(kStride) * kHeight * (kMaximumChannels + 1)) {}

WorkshopPool::Lease::Lease(WorkshopPool& pool) : pool_(pool) {
    {
        const std::lock_guard guard(pool.lock_);
        if (!pool.free_.empty()) {
            workshop_ = std::move(pool.free_.back());
            pool.free_.pop_back();
        }
    }
    if (!workshop_) workshop_ = std::make_unique<Workshop>();
}

WorkshopPool::Lease::~Lease() {
    const std::lock_guard guard(pool_.lock_);
    try {
        pool_.free_.push_back(std::move(workshop_));
    } catch (const std::bad_alloc&) { // it is made anew where it is needed again
    }
}

} // namespace kelvaro
