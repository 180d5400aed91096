// A main thread for programs without a window and for tests: the thread that made it runs the
// posted jobs when it asks for it.
#pragma once

#include "base/MainThread.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace kelvaro {

class MainLoop final : public MainThread {
public:
    void post(std::function<void()> job) override;
    bool isCurrent() const override { return std::this_thread::get_id() == owner_; }

    // Runs what has been posted by now, jobs that those jobs post included; returns how many ran.
    // Never waits. Only on the thread that made the loop, like `runUntil`.
    std::size_t runPosted();
    // Runs jobs as they come until `done` holds, which is looked at before each wait. Waits at most
    // `limitSeconds` in all; returns whether `done` held.
    bool runUntil(const std::function<bool()>& done, double limitSeconds);

private:
    std::function<void()> next(); // an empty function when nothing is posted

    const std::thread::id owner_ = std::this_thread::get_id();
    std::mutex lock_; // guards jobs_
    std::condition_variable posted_;
    std::deque<std::function<void()>> jobs_;
};

} // namespace kelvaro
