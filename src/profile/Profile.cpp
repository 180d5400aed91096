#include "profile/Profile.h"

#include "profile/ProfileSentences.h"
#include "profile/WallTime.h"

#include <algorithm>
#include <fmt/format.h>
#include <set>

namespace kelvaro {
namespace {

bool isIn(const DayRange& days, const ShotRecord& record) {
    if (!days.first && !days.end) return true;
    if (!record.taken) return false;
    return days.contains(dayOf(*record.taken));
}

std::vector<ShotRecord> recordsIn(const ProfileSource& source, const DayRange& days) {
    std::vector<ShotRecord> records;
    std::copy_if(source.records.begin(), source.records.end(), std::back_inserter(records),
                 [&](const ShotRecord& record) { return isIn(days, record); });
    return records;
}

std::int64_t editsIn(const ProfileSource& source, const DayRange& days) {
    return std::count_if(source.editDays.begin(), source.editDays.end(),
                         [&](std::int64_t day) { return days.contains(day); });
}

std::int64_t exportsIn(const ProfileSource& source, const DayRange& days) {
    std::int64_t sum = 0;
    for (const auto& [day, count] : source.exportsByDay)
        if (days.contains(day)) sum += count;
    return sum;
}

PeriodCounts countsOf(const ProfileSource& source, const DayRange& days,
                      const ShotSummary& summary) {
    return {.photos = summary.records,
            .daysOut = summary.shootingDays(),
            .favorites = summary.favorites,
            .edits = editsIn(source, days),
            .exports = exportsIn(source, days)};
}

} // namespace

Profile makeProfile(const ProfileSource& source, const DayRange& days) {
    const bool isEverything = !days.first && !days.end;
    const auto selected = isEverything ? std::vector<ShotRecord>() : recordsIn(source, days);
    const auto& records = isEverything ? source.records : selected;
    ShotSummary summary = summarized(records);
    Profile profile;
    profile.counts = countsOf(source, days, summary);
    profile.tags = styleTags(summary, profile.counts.edits);
    profile.signature = signature(summary);
    profile.cameraSentence = cameraSentence(summary);
    profile.lensSentence = lensSentence(summary);
    for (const ChartKind kind : kChartKinds)
        profile.charts.emplace_back(kind, records, summary);
    profile.photosByDay = std::move(summary.byDay);
    return profile;
}

Profile makeProfile(const ProfileSource& source, const ProfilePeriod& period,
                    const CivilTime& today) {
    Profile profile = makeProfile(source, daysOf(period, today));
    profile.period = period;
    if (const auto before = daysBefore(period, today)) {
        profile.before = countsOf(source, *before, summarized(recordsIn(source, *before)));
    }
    return profile;
}

std::vector<int> yearsOf(const ProfileSource& source) {
    std::set<std::int64_t> days;
    for (const ShotRecord& record : source.records)
        if (record.taken) days.insert(dayOf(*record.taken));
    std::set<int, std::greater<>> years;
    for (const std::int64_t day : days)
        years.insert(civilFromSeconds(day * kSecondsPerDay).year);
    return {years.begin(), years.end()};
}

std::string comparison(std::int64_t now, std::int64_t before, const std::string& titleBefore) {
    if (titleBefore.empty()) return {};
    if (now == before) return fmt::format("as many as {}", titleBefore);
    return fmt::format("{} {} than {}", std::abs(now - before), now > before ? "more" : "fewer",
                       titleBefore);
}

} // namespace kelvaro
