// What we ask for the time, so that tests can set it. Thread-safe.
#pragma once

namespace kelvaro {

class Clock {
public:
    virtual ~Clock() = default;
    // Seconds of a clock that never goes back; its zero means nothing.
    virtual double monotonicSeconds() const = 0;
    // Seconds since 1970-01-01 00:00 UTC, as the system's calendar clock has it.
    virtual double wallSeconds() const = 0;
};

} // namespace kelvaro
