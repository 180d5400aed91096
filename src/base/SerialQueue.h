// A worker thread of its own that runs jobs one after another, in the order in which they came.
// Posting never blocks on a job. Jobs must not throw, and must not wait for their own queue.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>

namespace kelvaro {

class SerialQueue {
public:
    // What the destructor does with jobs that have not begun; the one that has is always finished.
    enum class AtEnd { drain, drop };

    explicit SerialQueue(std::string label, AtEnd atEnd = AtEnd::drain);
    ~SerialQueue();
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    const std::string& label() const { return label_; }
    void post(std::function<void()> job);
    // Posts the job once so much time has passed. Dropped when the queue ends before.
    void postLater(std::chrono::milliseconds delay, std::function<void()> job);
    // Blocks until every job posted before this call has ended. Not from a job of this queue.
    void waitUntilIdle();
    // Whether the caller runs on this queue's thread.
    bool isCurrent() const { return std::this_thread::get_id() == worker_.get_id(); }

private:
    using Steady = std::chrono::steady_clock;

    void work();
    void takeDue(); // moves the jobs whose time has come to the others
    void waitForJob(std::unique_lock<std::mutex>& guard);

    const std::string label_;
    const AtEnd atEnd_;
    std::mutex lock_; // guards the fields up to ending_
    std::condition_variable posted_, ended_;
    std::deque<std::function<void()>> jobs_;
    std::multimap<Steady::time_point, std::function<void()>> later_;
    std::uint64_t postedCount_ = 0, endedCount_ = 0;
    bool ending_ = false;
    std::thread worker_; // last: it uses all of the above
};

} // namespace kelvaro
