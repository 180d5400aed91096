// The photos behind a bar of a chart or a day of the calendar, as the library shows them alone.
#pragma once

#include "library/PhotoQuery.h"
#include "platform/TextRules.h"
#include "profile/Profile.h"

namespace kelvaro {

// "ƒ/2.8 · 2024". Photos that are found later join when they belong to the bar.
SharedRestriction photosOfBar(const Chart& chart, std::size_t bar, const ProfilePeriod& period,
                              const CivilTime& today);
// "Saturday, 9 March 2024"; days since 1970-01-01.
SharedRestriction photosOfDay(std::int64_t day, const TextRules& rules);

} // namespace kelvaro
