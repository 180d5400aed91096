// What the profile page tells about one period: counts beside those of the period before, tags,
// sentences and charts. A plain value, made off the main thread from plain values.
#pragma once

#include "profile/ProfileCharts.h"
#include "profile/ProfilePeriod.h"
#include "profile/StyleTag.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kelvaro {

// The whole library's past, as the profile reads it.
struct ProfileSource {
    std::vector<ShotRecord> records;
    std::vector<std::int64_t> editDays;                // one per edited photo: of its latest edit
    std::map<std::int64_t, std::int64_t> exportsByDay; // photos exported
};

struct PeriodCounts {
    std::int64_t photos = 0, daysOut = 0, favorites = 0, edits = 0, exports = 0;
    bool operator==(const PeriodCounts&) const = default;
};

struct Profile {
    ProfilePeriod period;
    PeriodCounts counts;
    std::optional<PeriodCounts> before; // none for all time
    std::vector<StyleTag> tags;         // every one earned, in the order of the rules
    std::optional<std::string> signature, cameraSentence, lensSentence;
    std::vector<Chart> charts;                        // one per kind
    std::map<std::int64_t, std::int64_t> photosByDay; // for a calendar; days since 1970-01-01
};

// A photo without a capture time belongs to all time alone.
Profile makeProfile(const ProfileSource& source, const ProfilePeriod& period,
                    const CivilTime& today);
// The same for any stretch of days, compared with nothing.
Profile makeProfile(const ProfileSource& source, const DayRange& days);

// The years that photos were taken in, the latest first.
std::vector<int> yearsOf(const ProfileSource& source);

// "12 more than last month", "3 fewer than 2023", "as many as last month"; empty without a period
// before.
std::string comparison(std::int64_t now, std::int64_t before, const std::string& titleBefore);

} // namespace kelvaro
