// The stretch of time that the profile tells about, in days of the wall calendar.
#pragma once

#include "platform/LocalCalendar.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelvaro {

// Whole days, the first inclusive, the end not; days since 1970-01-01. Without an end or a first
// day there is no limit on that side.
struct DayRange {
    std::optional<std::int64_t> first, end;

    bool contains(std::int64_t day) const {
        return (!first || day >= *first) && (!end || day < *end);
    }
    bool operator==(const DayRange&) const = default;
};

struct ProfilePeriod {
    enum class Kind { thisMonth, lastMonth, thisYear, year, allTime };
    Kind kind = Kind::allTime;
    int year = 0; // for Kind::year alone

    bool operator==(const ProfilePeriod&) const = default;
};

// "This month", "Last month", "This year", "2023", "All time".
std::string title(const ProfilePeriod& period);

// The form kept in the settings: "thisMonth", "2023"; a text that is none gives all time.
std::string storedText(const ProfilePeriod& period);
ProfilePeriod periodFrom(std::string_view storedText);

DayRange daysOf(const ProfilePeriod& period, const CivilTime& today);

// The period of the same kind before it, to compare with: the month before, the year before. None
// for all time. A period that today lies in is compared with as many days of the one before, so
// that a young month does not look poor.
std::optional<DayRange> daysBefore(const ProfilePeriod& period, const CivilTime& today);
// "by this day last month", "the month before", "2022"; empty for all time.
std::string titleBefore(const ProfilePeriod& period, const CivilTime& today);

} // namespace kelvaro
