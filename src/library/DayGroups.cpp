#include "library/DayGroups.h"

namespace kelvaro {

DayGroups::Period DayGroups::periodOf(FileTime time, bool isMonth) const {
    const CivilTime civil = calendar_.civil(time);
    const CivilTime first{civil.year, civil.month, isMonth ? 1 : civil.day};
    const CivilTime next = isMonth ? CivilTime{civil.year, civil.month + 1, 1}
                                   : civilFromSeconds(secondsAsUtc(first) + 86400);
    return {calendar_.instant(first), calendar_.instant(next), first};
}

std::string DayGroups::heading(const Period& period, bool isMonth, FileTime now) {
    const std::int64_t day = dayNumber(period.first);
    if (!isMonth) {
        const std::int64_t today = dayNumber(calendar_.civil(now));
        if (day == today) return rules_.todayHeading();
        if (day == today - 1) return rules_.yesterdayHeading();
    }
    std::string& text = spelt_[{day, isMonth}];
    if (text.empty()) {
        text = isMonth ? rules_.monthHeading(period.first) : rules_.dayHeading(period.first);
    }
    return text;
}

} // namespace kelvaro
