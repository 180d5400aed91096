#include "profile/Profile.h"

#include "fakes/MemorySettings.h"
#include "platform/system/IcuCalendar.h"
#include "profile/ExportHistory.h"
#include "profile/GearNames.h"
#include "profile/Greeting.h"
#include "profile/ProfileSentences.h"
#include "profile/WallTime.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvaro {
namespace {

ShotRecord on(const CivilTime& time) {
    ShotRecord record;
    record.taken = secondsAsUtc(time);
    return record;
}

std::vector<ShotRecord> shot(std::initializer_list<std::pair<const char*, int>> cameras) {
    std::vector<ShotRecord> records;
    for (const auto& [name, count] : cameras) {
        ShotRecord record;
        record.camera = record.lens = name;
        records.insert(records.end(), static_cast<std::size_t>(count), record);
    }
    return records;
}

TEST(Profile, CountsAPeriodBesideAsMuchOfTheOneBefore) {
    ProfileSource source;
    source.records = {on({2024, 3, 1, 0, 0, 0}),    on({2024, 3, 10, 23, 59, 59}),
                      on({2024, 3, 10, 1, 0, 0}),   on({2024, 2, 29, 23, 59, 59}),
                      on({2024, 2, 10, 12, 0, 0}),  on({2024, 2, 11, 0, 0, 0}),
                      on({2023, 12, 31, 23, 0, 0}), ShotRecord{}};
    source.records[0].favorite = true;
    source.undatedEdits = 1;
    source.editDays = {dayNumber({2024, 3, 2}), dayNumber({2024, 2, 1})};
    source.exportsByDay = {{dayNumber({2024, 3, 31}), 7}, {dayNumber({2024, 2, 10}), 2}};
    const CivilTime today{2024, 3, 10, 9, 0, 0};
    using Kind = ProfilePeriod::Kind;

    const Profile month = makeProfile(source, {Kind::thisMonth}, today);
    EXPECT_EQ(month.counts, (PeriodCounts{3, 2, 1, 1, 7}));
    EXPECT_EQ(*month.before, (PeriodCounts{1, 1, 0, 1, 2})); // February up to its tenth
    EXPECT_EQ(makeProfile(source, {Kind::lastMonth}, today).counts.photos, 3);
    EXPECT_EQ(makeProfile(source, {Kind::thisYear}, today).counts.photos, 6);
    EXPECT_EQ(makeProfile(source, {Kind::thisYear}, today).before->photos, 0);
    EXPECT_EQ(makeProfile(source, {Kind::year, 2023}, today).counts.photos, 1);
    const Profile all = makeProfile(source, {Kind::allTime}, today);
    EXPECT_EQ(all.counts.photos, 8);
    EXPECT_EQ(all.counts.edits, 3);
    EXPECT_FALSE(all.before);
    EXPECT_EQ(all.years, (std::vector{2024, 2023}));
    EXPECT_EQ(all.calendarYear, 2024);
    EXPECT_EQ(all.photosByDay.size(), 5u);
    EXPECT_EQ(month.photosByDay, all.photosByDay); // the whole year around the month
    // January looks back over the turn of the year.
    const CivilTime january{2024, 1, 31};
    EXPECT_EQ(makeProfile(source, {Kind::lastMonth}, january).counts.photos, 1);
    // As much of the year before as has gone by of this one is told as that.
    EXPECT_EQ(titleBefore({Kind::thisYear}, today), "by this day in 2023");
    EXPECT_EQ(titleBefore({Kind::year, 2024}, today), "by this day in 2023");
    EXPECT_EQ(titleBefore({Kind::year, 2023}, today), "2022");
    EXPECT_EQ(comparison(3, 1, "last month"), "2 more than last month");
    EXPECT_EQ(comparison(1, 3, "2023"), "2 fewer than 2023");
    EXPECT_EQ(comparison(3, 3, "last month"), "as many as last month");
}

Chart chart(ChartKind kind, const std::vector<ShotRecord>& records) {
    return Chart(kind, records, summarized(records));
}

TEST(Profile, ChartsCountEachRecordOnceAndFindItsBarAgain) {
    std::vector<ShotRecord> records;
    for (int i = 0; i < 40; ++i) {
        ShotRecord record = on({1900 + 5 * i, 1 + i % 12, 1 + i % 28, i % 24, 0, 0});
        record.focal = 8 + 9.7 * i;
        record.aperture = 0.95 + 0.7 * i;
        record.shutter = 1.0 / (1 << (i % 14));
        record.iso = 50 << (i % 10);
        record.camera = "camera " + std::to_string(i % 11);
        records.push_back(record);
    }
    records.emplace_back();
    for (const ChartKind kind : kChartKinds) {
        const Chart counted = chart(kind, records);
        SCOPED_TRACE(counted.title());
        EXPECT_EQ(counted.recorded(), kind == ChartKind::lens ? 0 : 40);
        std::vector<std::int64_t> counts(counted.bars().size());
        for (const ShotRecord& record : records)
            if (const auto bar = counted.barOf(record)) ++counts.at(*bar);
        for (std::size_t i = 0; i < counts.size(); ++i)
            EXPECT_EQ(counts[i], counted.bars()[i].count) << counted.bars()[i].label;
    }
    EXPECT_EQ(chart(ChartKind::camera, records).bars().size(), 8u);
    EXPECT_EQ(chart(ChartKind::camera, records).bars().back().label, "Others");
    EXPECT_EQ(chart(ChartKind::lens, records).description(),
              "Lenses: Not recorded in these photos.");
    // ƒ/3.3 is nearer to 2.8 than to 4 in stops, ƒ/3.4 is not.
    ShotRecord record;
    record.aperture = 3.3;
    EXPECT_EQ(chart(ChartKind::aperture, {}).barOf(record), 2u);
    record.aperture = 3.4;
    EXPECT_EQ(chart(ChartKind::aperture, {}).barOf(record), 3u);
}

TEST(Profile, SentencesNameTheGearAndTheUsualSettings) {
    const auto camera = [](auto counts) {
        return cameraSentence(summarized(shot(counts))).value();
    };
    const auto lens = [](auto counts) { return lensSentence(summarized(shot(counts))).value(); };
    using Counts = std::initializer_list<std::pair<const char*, int>>;
    EXPECT_EQ(camera(Counts{{"X100V", 3}}), "Every photo from your X100V");
    EXPECT_EQ(camera(Counts{{"A", 10}, {"B", 9}}), "Your A and B share the work almost equally.");
    EXPECT_EQ(camera(Counts{{"A", 10}, {"B", 8}}), "Your A leads, with 6 of every 10 photos.");
    EXPECT_EQ(camera(Counts{{"A", 99}, {"B", 1}}), "Your A leads, with 9 of every 10 photos.");
    EXPECT_EQ(camera(Counts{{"A", 10}, {"B", 10}, {"C", 9}}),
              "Your A leads, with 3 of every 10 photos.");
    EXPECT_EQ(lens(Counts{{"50mm", 3}}), "One lens for everything: your 50mm");
    EXPECT_EQ(lens(Counts{{"50mm", 6}, {"35mm", 4}}),
              "Your 50mm stays on the camera most: 6 of every 10 photos.");
    EXPECT_FALSE(cameraSentence(summarized({})));

    ShotRecord record;
    record.aperture = 1.8;
    record.shutter = 1.0 / 125;
    record.iso = 400;
    std::vector<ShotRecord> ten(10, record);
    EXPECT_EQ(signature(summarized(ten)),
              "shallow focus, everyday shutter speeds and low ISO in good light");
    for (ShotRecord& each : ten)
        each.shutter.reset();
    EXPECT_EQ(signature(summarized(ten)), "shallow focus and low ISO in good light");
    ten.pop_back();
    EXPECT_FALSE(signature(summarized(ten)));
}

TEST(Profile, RecordsLeaveOutWhatCannotBe) {
    Photo photo;
    photo.isRaw = true;
    PhotoMeta meta;
    meta.iso = 0;
    meta.aperture = 0;
    meta.shutter = 1e9;
    meta.focalLength = -5;
    meta.camera = "  ";
    meta.takenOnWall = secondsAsUtc({2099, 12, 31, 23, 0, 0});
    for (const double absurd : {0.0, -1.0, 1e300, std::nan(""), HUGE_VAL}) {
        meta.aperture = meta.shutter = meta.focalLength = absurd;
        const ShotRecord odd = makeShotRecord(photo, &meta, true);
        EXPECT_FALSE(odd.aperture || odd.shutter || odd.focal) << absurd;
    }
    meta.shutter = 1e9;
    const ShotRecord record = makeShotRecord(photo, &meta, true);
    ShotRecord expected;
    expected.isRaw = expected.favorite = true;
    expected.taken = meta.takenOnWall;
    EXPECT_EQ(record, expected);
    EXPECT_EQ(makeShotRecord(photo, nullptr, false).taken, std::nullopt);
    // A name that is far too long is cut, not inside a character.
    meta.lens = "x" + std::string(79, 'y');
    EXPECT_EQ(makeShotRecord(photo, &meta, false).lens, meta.lens);
    std::string umlauts = "x";
    for (int i = 0; i < 2500; ++i)
        umlauts += "ü";
    meta.lens = umlauts;
    EXPECT_EQ(makeShotRecord(photo, &meta, false).lens, umlauts.substr(0, 79) + "…");
}

// Clocks that were set wrong, hours that come twice or never, and names of any length.
TEST(Profile, OddTimesAndNamesCountLikeOthers) {
    ProfileSource source;
    // 2024-03-31 02:30 did not exist in Berlin, 2024-10-27 02:30 came twice.
    source.records = {on({1900, 1, 1, 0, 0, 0}), on({2099, 12, 31, 23, 59, 59}),
                      on({2024, 3, 31, 2, 30, 0}), on({2024, 10, 27, 2, 30, 0}),
                      on({2024, 10, 27, 2, 30, 0})};
    source.records[0].camera = std::string(5000, 'x');
    source.records[1].camera = "Ünïcode ƒ";
    const CivilTime today{2024, 12, 1};
    const Profile profile = makeProfile(source, {ProfilePeriod::Kind::allTime}, today);
    EXPECT_EQ(profile.counts, (PeriodCounts{5, 4, 0, 0, 0}));
    EXPECT_EQ(profile.years, (std::vector{2099, 2024, 1900}));
    EXPECT_EQ(profile.calendarYear, 2024);           // not the one that is still to come
    EXPECT_EQ(profile.charts[0].bars()[2].count, 3); // by the clock on the wall
    EXPECT_EQ(makeProfile(source, {ProfilePeriod::Kind::year, 1900}, today).counts.photos, 1);
    EXPECT_EQ(makeProfile(source, {ProfilePeriod::Kind::year, 2099}, today).counts.photos, 1);
    EXPECT_TRUE(profile.tags.empty());
    const Profile nothing = makeProfile({}, {ProfilePeriod::Kind::thisMonth}, today);
    EXPECT_EQ(nothing.counts, PeriodCounts());
    EXPECT_EQ(nothing.calendarYear, 2024);
    EXPECT_TRUE(sentencesOf(nothing).empty());
}

// From the file to the profile: the clock on the wall counts wherever the photo was taken and
// wherever the user is now; edits happen in the user's own zone.
TEST(Profile, JourneysAndChangedClocksKeepTheirHours) {
    const struct {
        const char *time, *offset;
        std::int64_t day;
        std::size_t hour;
    } cases[] = {{"2024:03:10 06:00:00", "+09:00", dayNumber({2024, 3, 10}), 6},
                 {"2024:03:10 23:30:00", "-10:00", dayNumber({2024, 3, 10}), 23},
                 {"2024:03:31 02:30:00", "", dayNumber({2024, 3, 31}), 2}, // skipped in Berlin
                 {"2024:10:27 02:30:00", "+02:00", dayNumber({2024, 10, 27}), 2},
                 {"2024:10:27 02:30:00", "+01:00", dayNumber({2024, 10, 27}), 2}};
    for (const char* zone : {"Europe/Berlin", "Asia/Tokyo", "Pacific/Honolulu", "UTC"}) {
        const auto calendar = makeIcuCalendar(zone);
        for (const auto& c : cases) {
            PhotoProperties properties;
            properties.exif.set("DateTimeOriginal", std::string(c.time));
            if (*c.offset) properties.exif.set("OffsetTimeOriginal", std::string(c.offset));
            const PhotoMeta meta = makePhotoMeta(properties, Photo{}, *calendar);
            const std::vector<ShotRecord> one{makeShotRecord(Photo{}, &meta, false)};
            const ShotSummary summary = summarized(one);
            EXPECT_EQ(summary.byHour[c.hour], 1) << c.time << c.offset << zone;
            EXPECT_EQ(summary.byDay.at(c.day), 1) << c.time << c.offset << zone;
        }
    }
    // The evening before in Honolulu, and the hour around a change of the clocks in Berlin.
    const struct {
        const char* zone;
        FileTime edited;
        std::int64_t day;
    } edits[] = {{"Europe/Berlin", {1711838100'000'000'000}, dayNumber({2024, 3, 30})}, // 23:35
                 {"Europe/Berlin", {1711839900'000'000'000}, dayNumber({2024, 3, 31})}, // 00:05
                 {"Europe/Berlin", {1711922340'000'000'000}, dayNumber({2024, 3, 31})}, // 23:59
                 {"Europe/Berlin", {1711922400'000'000'000}, dayNumber({2024, 4, 1})},
                 {"Pacific/Honolulu", {1711839900'000'000'000}, dayNumber({2024, 3, 30})}};
    for (const auto& edit : edits) {
        const Photo photo;
        const KnownPhoto known{&photo, nullptr, true, false, edit.edited};
        const auto source = makeProfileSource({&known, 1}, *makeIcuCalendar(edit.zone), {});
        EXPECT_EQ(source.editDays, std::vector{edit.day}) << edit.edited.nanoseconds;
    }
}

TEST(Profile, TiesAreSettledTheSameEveryTime) {
    using Counts = std::initializer_list<std::pair<const char*, int>>;
    for (const auto& counts : {Counts{{"b", 5}, {"a", 5}}, Counts{{"a", 5}, {"b", 5}}}) {
        const ShotSummary summary = summarized(shot(counts));
        EXPECT_EQ(summary.cameras.front().name, "a");
        EXPECT_EQ(*cameraSentence(summary), "Your a and b share the work almost equally.");
    }
}

TEST(Profile, ZoomsCarryARangeInTheirName) {
    for (const char* zoom : {"24-70mm", "18 - 55", "EF70\t-  200", "XF16.5-55", "1-2"})
        EXPECT_TRUE(isZoomLens(zoom)) << zoom;
    for (const char* prime : {"50mm", "50mm F1.8", "G-50", "70- mm", "AF-S 85", "", "-", "70 -"})
        EXPECT_FALSE(isZoomLens(prime)) << prime;
}

TEST(Greeting, ChangesWithTheHourTheDayAndTheDate) {
    // 2024-03-09 was a Saturday. Each hour's band, by a line only that band has.
    struct Case {
        int day = 0, hour = 0;
        std::string_view ending;
    };
    for (const auto& [day, hour, ending] :
         std::initializer_list<Case>{{9, 5, ". Up with the blue hour"},
                                     {9, 7, ". Up with the blue hour"},
                                     {9, 8, ". Weekend light ahead"},
                                     {10, 10, ". Out shooting today?"},
                                     {11, 8, ". A fresh week of photos"},
                                     {12, 10, ". Let's make them shine"},
                                     {15, 8, ". Fresh light today?"},
                                     {9, 11, ". Lunchtime edit?"},
                                     {9, 13, ". A few photos before lunch?"},
                                     {11, 14, ". Golden hour isn't far"},
                                     {9, 16, ". Weekend wander?"},
                                     {9, 17, ". Camera nearby?"},
                                     {14, 20, ". Camera nearby?"},
                                     {15, 20, ". The weekend's nearly here"},
                                     {9, 21, ". One more edit?"},
                                     {9, 23, ". One more edit?"},
                                     {9, 0, "? The photos will wait"},
                                     {9, 4, "? The photos will wait"}}) {
        const auto lines = greetingLines({2024, 3, day, hour, 30, 0});
        const bool has =
            std::any_of(lines.begin(), lines.end(),
                        [&, wanted = ending](const auto& line) { return line.ending == wanted; });
        EXPECT_TRUE(has) << day << " " << hour << " " << ending;
    }
    // 1970-01-01 is day 719163, which three divides: the first line of three.
    EXPECT_EQ(greeting({1970, 1, 1, 23, 0, 0}, ""), "Working late? The photos are glad");
    EXPECT_EQ(greeting({1970, 1, 2, 21, 0, 0}, "Ada"), "Late session, Ada? Calm light for editing");
    EXPECT_EQ(greeting({1970, 1, 3, 21, 0, 0}, "Ada"), "Good evening, Ada. One more edit?");
}

TEST(ExportHistory, SurvivesARestartAndForgetsNonsense) {
    MemorySettings settings;
    ExportHistory(settings).add(100, 3);
    ExportHistory history(settings);
    history.add(100, 2);
    history.add(101, 0);
    EXPECT_EQ(ExportHistory(settings).byDay(), (std::map<std::int64_t, std::int64_t>{{100, 5}}));
    settings.set(ExportHistory::settingsKey,
                 std::vector<std::string>{"7", "7 x", "8 -1", "9 4", " ", "1e3 2"});
    EXPECT_EQ(ExportHistory(settings).byDay(), (std::map<std::int64_t, std::int64_t>{{9, 4}}));
}

} // namespace
} // namespace kelvaro
