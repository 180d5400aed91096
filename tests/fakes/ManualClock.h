// A clock that stands still until a test moves it. Both its times move together.
#pragma once

#include "base/Clock.h"

#include <atomic>

namespace kelvaro {

class ManualClock final : public Clock {
public:
    double monotonicSeconds() const override { return now_; }
    double wallSeconds() const override { return 1'700'000'000 + now_; }
    void advance(double seconds) { now_ = now_ + seconds; }

private:
    std::atomic<double> now_{1000};
};

} // namespace kelvaro
