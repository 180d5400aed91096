#include "base/SerialQueue.h"

#include "base/Require.h"

#include <utility>

namespace kelvaro {

SerialQueue::SerialQueue(std::string label, AtEnd atEnd)
    : label_(std::move(label)), atEnd_(atEnd), worker_([this] { work(); }) {}

SerialQueue::~SerialQueue() {
    std::deque<std::function<void()>> dropped; // let go outside the lock
    {
        std::lock_guard guard(lock_);
        ending_ = true;
        if (atEnd_ == AtEnd::drop) dropped.swap(jobs_);
    }
    posted_.notify_one();
    dropped.clear();
    worker_.join();
}

void SerialQueue::post(std::function<void()> job) {
    KELVARO_REQUIRE(job);
    {
        std::lock_guard guard(lock_);
        jobs_.push_back(std::move(job));
        ++postedCount_;
    }
    posted_.notify_one();
}

void SerialQueue::postLater(std::chrono::milliseconds delay, std::function<void()> job) {
    KELVARO_REQUIRE(job);
    {
        std::lock_guard guard(lock_);
        later_.emplace(Steady::now() + delay, std::move(job));
    }
    posted_.notify_one();
}

void SerialQueue::waitUntilIdle() {
    KELVARO_REQUIRE(!isCurrent());
    std::unique_lock guard(lock_);
    const std::uint64_t goal = postedCount_;
    ended_.wait(guard, [&] { return endedCount_ >= goal; });
}

void SerialQueue::takeDue() {
    const auto end = later_.upper_bound(later_.empty() ? Steady::time_point() : Steady::now());
    for (auto at = later_.begin(); at != end; at = later_.erase(at)) {
        jobs_.push_back(std::move(at->second));
        ++postedCount_;
    }
}

// Until there is a job, or the queue ends.
void SerialQueue::waitForJob(std::unique_lock<std::mutex>& guard) {
    for (takeDue(); jobs_.empty() && !ending_; takeDue()) {
        if (later_.empty())
            posted_.wait(guard);
        else
            posted_.wait_until(guard, later_.begin()->first);
    }
}

void SerialQueue::work() {
    std::unique_lock guard(lock_);
    while (true) {
        waitForJob(guard);
        if (jobs_.empty()) return;
        std::function<void()> job = std::move(jobs_.front());
        jobs_.pop_front();
        guard.unlock();
        job();
        job = nullptr; // what it holds is let go before it counts as ended
        guard.lock();
        ++endedCount_;
        ended_.notify_all();
    }
}

} // namespace kelvaro
