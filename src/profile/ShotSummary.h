// One pass over the records of a period: everything that tags, sentences and charts count. A plain
// value; names are copies. Counts are of records; a value's own count says how many carry it.
#pragma once

#include "profile/FocalBands.h"
#include "profile/ShotRecord.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelvaro {

struct NamedCount {
    std::string name;
    std::int64_t count = 0;
    bool operator==(const NamedCount&) const = default;
};

struct ShotSummary {
    std::int64_t records = 0, favorites = 0, raw = 0;

    std::int64_t withTime = 0;
    std::array<std::int64_t, 24> byHour{};
    std::array<std::int64_t, 7> byWeekday{};    // Monday first
    std::map<std::int64_t, std::int64_t> byDay; // days since 1970-01-01 that have records
    std::int64_t closeFollowers = 0;            // within two seconds of the frame before

    std::vector<NamedCount> cameras, lenses; // most used first, equal ones by name
    std::int64_t withCamera = 0, withLens = 0, phones = 0, zooms = 0;

    std::array<std::int64_t, FocalBands::count> byFocalBand{};
    std::int64_t withFocal = 0, farReach = 0; // of 300 mm and longer

    // The typical value is the one in the middle of all, in their order; the upper of two.
    std::optional<double> typicalAperture, typicalShutter;
    std::optional<int> typicalIso;
    std::int64_t withAperture = 0, withShutter = 0, withIso = 0;
    std::int64_t fast = 0, slow = 0; // of 1/1000 s and shorter; of 1 s and longer
    std::int64_t highIso = 0;        // of ISO 6400 and higher

    std::int64_t shootingDays() const { return static_cast<std::int64_t>(byDay.size()); }
    // The most records of one calendar day; 0 when none has a time.
    std::int64_t busiestDay() const;
};

ShotSummary summarized(std::span<const ShotRecord> records);

} // namespace kelvaro
