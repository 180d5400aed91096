// Jobs that wait until a test lets their time come.
#pragma once

#include "app/RunLater.h"
#include "fakes/ManualClock.h"

#include <map>

namespace kelvaro {

class LaterByHand {
public:
    explicit LaterByHand(ManualClock& clock) : clock_(clock) {}

    RunLater asked() {
        return [this](std::chrono::milliseconds delay, std::function<void()> job) {
            jobs_.emplace(clock_.monotonicSeconds() + double(delay.count()) / 1000, std::move(job));
        };
    }
    // Lets so much time pass, in steps from job to job; `between` runs after each.
    void pass(
        double seconds, const std::function<void()>& between = [] {}) {
        const double end = clock_.monotonicSeconds() + seconds;
        while (!jobs_.empty() && jobs_.begin()->first <= end) {
            const auto job = jobs_.extract(jobs_.begin());
            clock_.advance(std::max(0.0, job.key() - clock_.monotonicSeconds()));
            job.mapped()();
            between();
        }
        clock_.advance(std::max(0.0, end - clock_.monotonicSeconds()));
    }
    std::size_t waiting() const { return jobs_.size(); }

private:
    ManualClock& clock_;
    std::multimap<double, std::function<void()>> jobs_; // by when they are due
};

} // namespace kelvaro
