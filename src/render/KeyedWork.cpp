#include "render/KeyedWork.h"

#include <chrono>

namespace kelvaro {

namespace {

constexpr std::chrono::milliseconds kStep(50); // how late a cancellation may be seen

} // namespace

KeyedWork::Claim::~Claim() {
    if (!owner_) return;
    {
        std::lock_guard guard(owner_->lock_);
        owner_->active_.erase(key_);
    }
    owner_->ended_.notify_all();
}

std::optional<KeyedWork::Claim> KeyedWork::tryClaim(const std::string& key) {
    std::lock_guard guard(lock_);
    if (!active_.insert(key).second) return std::nullopt;
    return Claim(*this, key);
}

bool KeyedWork::waitFor(const std::string& key, const Cancellation* cancellation) {
    std::unique_lock guard(lock_);
    while (active_.count(key) > 0) {
        if (cancellation && cancellation->isCancelled()) return false;
        ended_.wait_for(guard, kStep);
    }
    return true;
}

std::size_t KeyedWork::activeCount() const {
    std::lock_guard guard(lock_);
    return active_.size();
}

} // namespace kelvaro
