#include "base/MainLoop.h"

#include "base/Require.h"

#include <chrono>
#include <utility>

namespace kelvaro {

void MainLoop::post(std::function<void()> job) {
    {
        std::lock_guard guard(lock_);
        jobs_.push_back(std::move(job));
    }
    posted_.notify_one();
}

std::function<void()> MainLoop::next() {
    std::lock_guard guard(lock_);
    if (jobs_.empty()) return {};
    auto job = std::move(jobs_.front());
    jobs_.pop_front();
    return job;
}

std::size_t MainLoop::runPosted() {
    KELVARO_REQUIRE(isCurrent());
    std::size_t count = 0;
    for (auto job = next(); job; job = next(), ++count)
        job();
    return count;
}

bool MainLoop::runUntil(const std::function<bool()>& done, double limitSeconds) {
    const auto limit =
        std::chrono::steady_clock::now() + std::chrono::duration<double>(limitSeconds);
    for (;;) {
        runPosted();
        if (done()) return true;
        std::unique_lock guard(lock_);
        if (!posted_.wait_until(guard, limit, [&] { return !jobs_.empty(); })) return false;
    }
}

} // namespace kelvaro
