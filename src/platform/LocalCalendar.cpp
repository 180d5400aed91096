#include "platform/LocalCalendar.h"

#include <chrono>

namespace kelvaro {

namespace {

constexpr std::int64_t kSecondsPerDay = 86400;

} // namespace

std::int64_t dayNumber(const CivilTime& time) {
    const int months = time.year * 12 + time.month - 1;
    const int year = (months - (months < 0 ? 11 : 0)) / 12;
    const auto first = std::chrono::sys_days(
        std::chrono::year(year) /
        std::chrono::month(static_cast<unsigned>(months - year * 12 + 1)) / 1);
    return first.time_since_epoch().count() + time.day - 1;
}

std::int64_t secondsAsUtc(const CivilTime& time) {
    return dayNumber(time) * kSecondsPerDay + time.hour * 3600 + time.minute * 60 + time.second;
}

CivilTime civilFromSeconds(std::int64_t seconds) {
    const std::int64_t day = (seconds - (seconds < 0 ? kSecondsPerDay - 1 : 0)) / kSecondsPerDay;
    const int rest = static_cast<int>(seconds - day * kSecondsPerDay);
    const std::chrono::year_month_day date{
        std::chrono::sys_days(std::chrono::days(static_cast<int>(day)))};
    return {int(date.year()),
            static_cast<int>(unsigned(date.month())),
            static_cast<int>(unsigned(date.day())),
            rest / 3600,
            rest / 60 % 60,
            rest % 60};
}

} // namespace kelvaro
