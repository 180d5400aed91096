#include "profile/ProfilePeriod.h"

#include <algorithm>
#include <charconv>

namespace kelvaro {
namespace {

std::int64_t firstOfMonth(int year, int month) {
    return dayNumber({.year = year, .month = month, .day = 1});
}

DayRange month(const CivilTime& today, int ahead) {
    return {firstOfMonth(today.year, today.month + ahead),
            firstOfMonth(today.year, today.month + ahead + 1)};
}

DayRange year(int year) {
    return {firstOfMonth(year, 1), firstOfMonth(year + 1, 1)};
}

// As much of `before` as has gone by of `current`, when today lies in it.
DayRange upToToday(DayRange before, const DayRange& current, const CivilTime& today) {
    const std::int64_t now = dayNumber(today);
    if (current.contains(now))
        before.end = std::min(*before.end, *before.first + (now - *current.first) + 1);
    return before;
}

} // namespace

std::string title(const ProfilePeriod& period) {
    switch (period.kind) {
    case ProfilePeriod::Kind::thisMonth:
        return "This month";
    case ProfilePeriod::Kind::lastMonth:
        return "Last month";
    case ProfilePeriod::Kind::thisYear:
        return "This year";
    case ProfilePeriod::Kind::year:
        return std::to_string(period.year);
    case ProfilePeriod::Kind::allTime:
        break;
    }
    return "All time";
}

std::string storedText(const ProfilePeriod& period) {
    switch (period.kind) {
    case ProfilePeriod::Kind::thisMonth:
        return "thisMonth";
    case ProfilePeriod::Kind::lastMonth:
        return "lastMonth";
    case ProfilePeriod::Kind::thisYear:
        return "thisYear";
    case ProfilePeriod::Kind::year:
        return std::to_string(period.year);
    case ProfilePeriod::Kind::allTime:
        break;
    }
    return "allTime";
}

ProfilePeriod periodFrom(std::string_view text) {
    using Kind = ProfilePeriod::Kind;
    for (const Kind kind : {Kind::thisMonth, Kind::lastMonth, Kind::thisYear})
        if (storedText({kind}) == text) return {kind};
    int year = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), year);
    const bool isYear = error == std::errc() && end == text.data() + text.size();
    return isYear && year > 0 && year <= 9999 ? ProfilePeriod{Kind::year, year} : ProfilePeriod{};
}

DayRange daysOf(const ProfilePeriod& period, const CivilTime& today) {
    switch (period.kind) {
    case ProfilePeriod::Kind::thisMonth:
        return month(today, 0);
    case ProfilePeriod::Kind::lastMonth:
        return month(today, -1);
    case ProfilePeriod::Kind::thisYear:
        return year(today.year);
    case ProfilePeriod::Kind::year:
        return year(period.year);
    case ProfilePeriod::Kind::allTime:
        break;
    }
    return {};
}

std::optional<DayRange> daysBefore(const ProfilePeriod& period, const CivilTime& today) {
    const DayRange current = daysOf(period, today);
    switch (period.kind) {
    case ProfilePeriod::Kind::thisMonth:
        return upToToday(month(today, -1), current, today);
    case ProfilePeriod::Kind::lastMonth:
        return month(today, -2);
    case ProfilePeriod::Kind::thisYear:
        return upToToday(year(today.year - 1), current, today);
    case ProfilePeriod::Kind::year:
        return upToToday(year(period.year - 1), current, today);
    case ProfilePeriod::Kind::allTime:
        break;
    }
    return std::nullopt;
}

std::string titleBefore(const ProfilePeriod& period, const CivilTime& today) {
    switch (period.kind) {
    case ProfilePeriod::Kind::thisMonth:
        return "by this day last month";
    case ProfilePeriod::Kind::lastMonth:
        return "the month before";
    case ProfilePeriod::Kind::thisYear:
        return "by this day in " + std::to_string(today.year - 1);
    case ProfilePeriod::Kind::year:
        return (period.year == today.year ? "by this day in " : "") +
               std::to_string(period.year - 1);
    case ProfilePeriod::Kind::allTime:
        break;
    }
    return {};
}

} // namespace kelvaro
