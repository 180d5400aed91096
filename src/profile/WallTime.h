// Readings of the clock on the wall, as seconds since 1970-01-01 00:00 as if it showed UTC, cut
// into days, hours and weekdays.
#pragma once

#include <cstddef>
#include <cstdint>

namespace kelvaro {

inline constexpr std::int64_t kSecondsPerDay = 86'400;

enum class Weekday { monday, tuesday, wednesday, thursday, friday, saturday, sunday };

// Days since 1970-01-01.
constexpr std::int64_t dayOf(std::int64_t wallSeconds) {
    return wallSeconds / kSecondsPerDay - (wallSeconds % kSecondsPerDay < 0 ? 1 : 0);
}

// 0 … 23
constexpr std::size_t hourOf(std::int64_t wallSeconds) {
    return static_cast<std::size_t>((wallSeconds - dayOf(wallSeconds) * kSecondsPerDay) / 3600);
}

// Day 0 was a Thursday.
constexpr Weekday weekdayOf(std::int64_t day) {
    return static_cast<Weekday>((day % 7 + 7 + static_cast<int>(Weekday::thursday)) % 7);
}

} // namespace kelvaro
