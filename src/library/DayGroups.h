// The headings of the grid: which day or month a date belongs to and what that is called. Keeps
// the names it has spelt; not thread-safe.
#pragma once

#include "platform/LocalCalendar.h"
#include "platform/TextRules.h"

#include <cstdint>
#include <map>
#include <string>
#include <utility>

namespace kelvaro {

class DayGroups {
public:
    // A stretch of time under one heading.
    struct Period {
        FileTime begin, end; // without `end`
        CivilTime first;     // its first day

        bool contains(FileTime time) const {
            return begin.nanoseconds <= time.nanoseconds && time.nanoseconds < end.nanoseconds;
        }
    };

    DayGroups(const TextRules& rules, const LocalCalendar& calendar)
        : rules_(rules), calendar_(calendar) {}

    Period periodOf(FileTime time, bool isMonth) const;
    // "Today" and "Yesterday" as seen from `now`, else the date.
    std::string heading(const Period& period, bool isMonth, FileTime now);

private:
    const TextRules& rules_;
    const LocalCalendar& calendar_;
    std::map<std::pair<std::int64_t, bool>, std::string> spelt_; // by first day, month or day
};

} // namespace kelvaro
