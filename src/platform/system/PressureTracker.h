// From single signs that memory is short to a level that stands for a while. Seconds of any
// monotonic clock. One thread.
#pragma once

#include "platform/MemoryPressure.h"

#include <optional>
#include <string_view>

namespace kelvaro {

class PressureTracker {
public:
    static constexpr double calmSeconds = 6; // without a sign, and all is well again

    // A sign; returns the level where it has changed. A warning does not end a critical state.
    std::optional<MemoryPressure> sign(MemoryPressure level, double now);
    // Time has passed.
    std::optional<MemoryPressure> passed(double now);
    // When `passed` has something to say; none while all is well.
    std::optional<double> calmAt() const;

private:
    MemoryPressure level_ = MemoryPressure::normal;
    double lastSign_ = 0;
};

// What a cgroup's memory.events counts, as far as it tells of pressure.
struct MemoryEvents {
    long long high = 0; // throttled above the soft limit
    long long max = 0;  // reclaimed at the hard limit, or killed for it

    static MemoryEvents parse(std::string_view text);
    // What a later count tells; none where nothing happened.
    std::optional<MemoryPressure> signSince(const MemoryEvents& before) const;
};

} // namespace kelvaro
