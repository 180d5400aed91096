#include "profile/Profile.h"

#include "profile/ProfileSentences.h"
#include "profile/WallTime.h"

#include <algorithm>
#include <fmt/format.h>
#include <set>
#include <unordered_map>

namespace kelvaro {
namespace {

std::vector<ShotRecord> recordsIn(const ProfileSource& source, const DayRange& days) {
    std::vector<ShotRecord> records;
    std::copy_if(source.records.begin(), source.records.end(), std::back_inserter(records),
                 [&](const ShotRecord& record) { return isIn(days, record); });
    return records;
}

std::int64_t editsIn(const ProfileSource& source, const DayRange& days) {
    const bool isEverything = !days.first && !days.end;
    return std::count_if(source.editDays.begin(), source.editDays.end(),
                         [&](std::int64_t day) { return days.contains(day); }) +
           (isEverything ? source.undatedEdits : 0);
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

std::int64_t firstDayOf(int year) {
    return dayNumber({.year = year, .month = 1, .day = 1});
}

// The year whose days the calendar shows. A clock that was set wrong must not take it to 2099.
int calendarYearOf(const Profile& profile, const CivilTime& today) {
    if (profile.period.kind != ProfilePeriod::Kind::allTime) {
        const auto first = *daysOf(profile.period, today).first;
        return civilFromSeconds(first * kSecondsPerDay).year;
    }
    for (const int year : profile.years)
        if (year <= today.year) return year;
    return profile.years.empty() ? today.year : profile.years.back();
}

void addCalendar(const ProfileSource& source, const CivilTime& today, Profile& profile) {
    std::unordered_map<std::int64_t, std::int64_t> counts;
    for (const ShotRecord& record : source.records)
        if (record.taken) ++counts[dayOf(*record.taken)];
    std::set<int, std::greater<>> years;
    for (const auto& [day, count] : counts)
        years.insert(civilFromSeconds(day * kSecondsPerDay).year);
    profile.years.assign(years.begin(), years.end());
    profile.calendarYear = calendarYearOf(profile, today);
    for (const auto& [day, count] : counts) {
        if (day >= firstDayOf(profile.calendarYear) && day < firstDayOf(profile.calendarYear + 1))
            profile.photosByDay.emplace(day, count);
    }
}

} // namespace

bool isIn(const DayRange& days, const ShotRecord& record) {
    if (!days.first && !days.end) return true;
    if (!record.taken) return false;
    return days.contains(dayOf(*record.taken));
}

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
    return profile;
}

Profile makeProfile(const ProfileSource& source, const ProfilePeriod& period,
                    const CivilTime& today) {
    Profile profile = makeProfile(source, daysOf(period, today));
    profile.period = period;
    addCalendar(source, today, profile);
    if (const auto before = daysBefore(period, today)) {
        profile.before = countsOf(source, *before, summarized(recordsIn(source, *before)));
    }
    return profile;
}

std::vector<std::string> sentencesOf(const Profile& profile) {
    std::vector<std::string> sentences;
    if (profile.signature) sentences.push_back("Your signature: " + *profile.signature + ".");
    for (const auto& sentence : {profile.cameraSentence, profile.lensSentence})
        if (sentence) sentences.push_back(*sentence);
    return sentences;
}

std::string comparison(std::int64_t now, std::int64_t before, const std::string& titleBefore) {
    if (titleBefore.empty()) return {};
    if (now == before) return fmt::format("as many as {}", titleBefore);
    return fmt::format("{} {} than {}", std::abs(now - before), now > before ? "more" : "fewer",
                       titleBefore);
}

} // namespace kelvaro
