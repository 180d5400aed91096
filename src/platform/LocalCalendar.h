// Calendar days and clock times in the user's time zone (Gregorian calendar). Thread-safe.
#pragma once

#include "platform/FileSystem.h"

#include <cstdint>

namespace kelvaro {

// A reading of a calendar and a clock on the wall, without a time zone.
struct CivilTime {
    int year = 1970, month = 1, day = 1; // month and day from 1
    int hour = 0, minute = 0, second = 0;

    bool operator==(const CivilTime&) const = default;
};

// Days since 1970-01-01 of the date alone; months out of 1 … 12 are carried into the year.
std::int64_t dayNumber(const CivilTime& time);
// Seconds since 1970-01-01 00:00 as if the clock showed UTC, and back.
std::int64_t secondsAsUtc(const CivilTime& time);
CivilTime civilFromSeconds(std::int64_t seconds);

class LocalCalendar {
public:
    virtual ~LocalCalendar() = default;
    virtual CivilTime civil(FileTime instant) const = 0;
    // Of a reading that a change of the clocks skips, as if they had not been changed yet; of one
    // that comes twice, the first.
    virtual FileTime instant(const CivilTime& civil) const = 0;
};

} // namespace kelvaro
