// The whole library's past as the profile reads it, collected once and then asked for one period
// after another. A plain value.
#pragma once

#include "library/PhotoQuery.h"
#include "profile/ShotRecord.h"

#include <cstdint>
#include <map>
#include <span>
#include <vector>

namespace kelvaro {

struct ProfileSource {
    std::vector<ShotRecord> records;
    std::vector<std::int64_t> editDays; // one per edited photo: of its latest edit
    std::int64_t undatedEdits = 0;      // edited photos whose file does not tell when
    std::map<std::int64_t, std::int64_t> exportsByDay; // photos exported
};

// Days of edits are those of the user's calendar. Any thread.
ProfileSource makeProfileSource(std::span<const KnownPhoto> photos, const LocalCalendar& calendar,
                                std::map<std::int64_t, std::int64_t> exportsByDay);

} // namespace kelvaro
