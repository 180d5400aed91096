#include "profile/ShotSummary.h"

#include "profile/GearNames.h"
#include "profile/WallTime.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace kelvaro {
namespace {

constexpr std::int64_t closeSeconds = 2;
constexpr double farReachMm = 300, fastSeconds = 1.0 / 1000, slowSeconds = 1;
constexpr int highestIso = 6400;

using NameCounts = std::unordered_map<std::string_view, std::int64_t>;

std::vector<NamedCount> mostUsedFirst(const NameCounts& counts) {
    std::vector<NamedCount> list;
    list.reserve(counts.size());
    for (const auto& [name, count] : counts)
        list.push_back({std::string(name), count});
    std::sort(list.begin(), list.end(), [](const NamedCount& a, const NamedCount& b) {
        return a.count != b.count ? a.count > b.count : a.name < b.name;
    });
    return list;
}

template<class Test>
std::int64_t countOf(const std::vector<NamedCount>& list, Test test) {
    std::int64_t sum = 0;
    for (const NamedCount& entry : list)
        if (test(entry.name)) sum += entry.count;
    return sum;
}

std::int64_t total(const std::vector<NamedCount>& list) {
    return countOf(list, [](const std::string&) { return true; });
}

void countTimes(std::vector<std::int64_t> times, ShotSummary& summary) {
    std::sort(times.begin(), times.end());
    summary.withTime = static_cast<std::int64_t>(times.size());
    auto day = summary.byDay.end();
    for (std::size_t i = 0; i < times.size(); ++i) {
        const std::int64_t number = dayOf(times[i]);
        if (day == summary.byDay.end() || day->first != number)
            day = summary.byDay.emplace_hint(summary.byDay.end(), number, 0);
        ++day->second;
        ++summary.byHour[hourOf(times[i])];
        ++summary.byWeekday[static_cast<std::size_t>(weekdayOf(number))];
        if (i > 0 && times[i] - times[i - 1] <= closeSeconds) ++summary.closeFollowers;
    }
}

void countGear(std::span<const ShotRecord> records, ShotSummary& summary) {
    NameCounts cameras, lenses;
    for (const ShotRecord& record : records) {
        if (record.camera) ++cameras[*record.camera];
        if (record.lens) ++lenses[*record.lens];
    }
    summary.cameras = mostUsedFirst(cameras);
    summary.lenses = mostUsedFirst(lenses);
    summary.withCamera = total(summary.cameras);
    summary.withLens = total(summary.lenses);
    summary.phones = countOf(summary.cameras, isPhone);
    summary.zooms = countOf(summary.lenses, isZoomLens);
}

template<class T>
std::optional<T> middle(std::vector<T>& values) {
    if (values.empty()) return std::nullopt;
    const auto place = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), place, values.end());
    return *place;
}

void countSettings(std::span<const ShotRecord> records, ShotSummary& summary) {
    std::vector<double> apertures, shutters;
    std::vector<int> isos;
    for (const ShotRecord& record : records) {
        if (record.aperture) apertures.push_back(*record.aperture);
        if (record.shutter) {
            shutters.push_back(*record.shutter);
            summary.fast += *record.shutter <= fastSeconds;
            summary.slow += *record.shutter >= slowSeconds;
        }
        if (record.iso) {
            isos.push_back(*record.iso);
            summary.highIso += *record.iso >= highestIso;
        }
    }
    summary.withAperture = static_cast<std::int64_t>(apertures.size());
    summary.withShutter = static_cast<std::int64_t>(shutters.size());
    summary.withIso = static_cast<std::int64_t>(isos.size());
    summary.typicalAperture = middle(apertures);
    summary.typicalShutter = middle(shutters);
    summary.typicalIso = middle(isos);
}

} // namespace

std::int64_t ShotSummary::busiestDay() const {
    std::int64_t most = 0;
    for (const auto& [day, count] : byDay)
        most = std::max(most, count);
    return most;
}

ShotSummary summarized(std::span<const ShotRecord> records) {
    ShotSummary summary;
    summary.records = static_cast<std::int64_t>(records.size());
    std::vector<std::int64_t> times;
    times.reserve(records.size());
    for (const ShotRecord& record : records) {
        summary.favorites += record.favorite;
        summary.raw += record.isRaw;
        if (record.taken) times.push_back(*record.taken);
        if (!record.focal) continue;
        ++summary.withFocal;
        ++summary.byFocalBand[FocalBands::indexOf(*record.focal)];
        summary.farReach += *record.focal >= farReachMm;
    }
    countTimes(std::move(times), summary);
    countGear(records, summary);
    countSettings(records, summary);
    return summary;
}

} // namespace kelvaro
