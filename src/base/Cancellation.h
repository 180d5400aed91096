// A thread-safe flag that is handed into long work and looked at between its steps. Once set it
// stays set.
#pragma once

#include <atomic>

namespace kelvaro {

class Cancellation {
public:
    void cancel() noexcept { cancelled_.store(true, std::memory_order_relaxed); }
    bool isCancelled() const noexcept { return cancelled_.load(std::memory_order_relaxed); }

private:
    std::atomic<bool> cancelled_{false};
};

} // namespace kelvaro
