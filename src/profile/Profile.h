// What the profile page tells about one period: counts beside those of the period before, tags,
// sentences and charts. A plain value, made off the main thread from plain values.
#pragma once

#include "profile/ProfileCharts.h"
#include "profile/ProfilePeriod.h"
#include "profile/ProfileSource.h"
#include "profile/StyleTag.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kelvaro {

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
    std::vector<Chart> charts; // one per kind
    // All photos of the year that the period lies in, for a calendar; of all time the latest year
    // with photos. Days since 1970-01-01.
    int calendarYear = 0;
    std::map<std::int64_t, std::int64_t> photosByDay;
    std::vector<int> years; // with photos, the latest first
};

// Whether the record counts in these days. One without a capture time counts in all time alone.
bool isIn(const DayRange& days, const ShotRecord& record);

// A photo without a capture time belongs to all time alone, as does an edit without a date.
Profile makeProfile(const ProfileSource& source, const ProfilePeriod& period,
                    const CivilTime& today);
// The same for any stretch of days, compared with nothing.
Profile makeProfile(const ProfileSource& source, const DayRange& days);

// The signature and the gear, one line each; none without records that tell.
std::vector<std::string> sentencesOf(const Profile& profile);

// "12 more than by this day last month", "3 fewer than 2023", "as many as 2023"; empty without a
// period before.
std::string comparison(std::int64_t now, std::int64_t before, const std::string& titleBefore);

} // namespace kelvaro
