// The one thread that owns everything observable, as seen from other threads: they hand it jobs.
#pragma once

#include <functional>

namespace kelvaro {

class MainThread {
public:
    virtual ~MainThread() = default;
    // Runs `job` on the main thread, later, in the order of posting; any thread may post. Jobs must
    // not throw. Jobs that never ran when the program ends are dropped.
    virtual void post(std::function<void()> job) = 0;
    // Whether the caller runs on the main thread.
    virtual bool isCurrent() const = 0;
};

} // namespace kelvaro
