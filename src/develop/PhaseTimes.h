// How long the named phases of one piece of work took (decode, analysis, render, encode), for
// whoever asked for timings. Thread-safe; costs a clock reading per phase, and nothing where nobody
// listens.
#pragma once

#include "base/Locked.h"

#include <chrono>
#include <functional>
#include <string>
#include <vector>

namespace kelvaro {

class PhaseTimes {
public:
    using Duration = std::chrono::nanoseconds;
    using Clock = std::function<Duration()>; // monotonic, from any origin

    explicit PhaseTimes(Clock clock = steadyClock) : clock_(std::move(clock)) {}

    struct Phase {
        std::string name;
        Duration time{};
        int count = 0; // how often it ran
        double milliseconds() const {
            return std::chrono::duration<double, std::milli>(time).count();
        }
    };
    // In the order in which the phases first ended.
    std::vector<Phase> phases() const { return phases_.copy(); }
    void add(const std::string& name, Duration time);
    Duration now() const { return clock_(); }

    static Duration steadyClock();

private:
    Clock clock_;
    Locked<std::vector<Phase>> phases_;
};

// Adds the time from here to the end of the scope; `times` may be null.
class TimedPhase {
public:
    TimedPhase(PhaseTimes* times, const char* name)
        : times_(times), name_(name), begin_(times ? times->now() : PhaseTimes::Duration{}) {}
    ~TimedPhase() {
        if (times_) times_->add(name_, times_->now() - begin_);
    }
    TimedPhase(const TimedPhase&) = delete;
    TimedPhase& operator=(const TimedPhase&) = delete;

private:
    PhaseTimes* times_;
    const char* name_;
    PhaseTimes::Duration begin_;
};

} // namespace kelvaro
