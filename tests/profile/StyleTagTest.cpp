#include "profile/StyleTag.h"

#include "platform/LocalCalendar.h"
#include "profile/FocalBands.h"

#include <algorithm>
#include <functional>
#include <gtest/gtest.h>
#include <optional>

namespace kelvaro {
namespace {

using Fill = std::function<void(ShotRecord&)>;

std::vector<ShotRecord> records(std::size_t count, const Fill& fill = {}) {
    std::vector<ShotRecord> list(count);
    if (fill) std::for_each(list.begin(), list.end(), fill);
    return list;
}

// `hits` records filled one way, the rest of `all` the other.
std::vector<ShotRecord> mixed(std::size_t hits, std::size_t all, const Fill& hit,
                              const Fill& other) {
    auto list = records(hits, hit);
    const auto rest = records(all - hits, other);
    list.insert(list.end(), rest.begin(), rest.end());
    return list;
}

std::optional<StyleTag> tag(const std::vector<ShotRecord>& list, const std::string& title,
                            std::int64_t edits = 0) {
    const auto tags = styleTags(summarized(list), edits);
    const auto found = std::find_if(tags.begin(), tags.end(),
                                    [&](const StyleTag& each) { return each.title == title; });
    return found == tags.end() ? std::nullopt : std::optional(*found);
}

Fill focal(double mm) {
    return [mm](ShotRecord& record) { record.focal = mm; };
}
Fill lens(const std::string& name) {
    return [name](ShotRecord& record) { record.lens = name; };
}
Fill camera(const std::string& name) {
    return [name](ShotRecord& record) { record.camera = name; };
}
Fill aperture(double number) {
    return [number](ShotRecord& record) { record.aperture = number; };
}
Fill shutter(double seconds) {
    return [seconds](ShotRecord& record) { record.shutter = seconds; };
}
Fill iso(int value) {
    return [value](ShotRecord& record) { record.iso = value; };
}
// 2024-03-11 was a Monday.
std::int64_t at(int day, int hour, int minute = 0, int second = 0) {
    return secondsAsUtc({2024, 3, day, hour, minute, second});
}
Fill taken(int day, int hour, int minute = 0) {
    return [=](ShotRecord& record) { record.taken = at(day, hour, minute); };
}
Fill heart(bool favorite) {
    return [=](ShotRecord& record) { record.favorite = favorite; };
}
Fill raw(bool isRaw) {
    return [=](ShotRecord& record) { record.isRaw = isRaw; };
}

// A rule on a share: the tag at exactly the limit and not one record short of it.
struct ShareCase {
    std::string title;
    Fill hit, other;
    std::size_t limit = 0;  // of 100 records
    std::string reason;     // at the limit
    bool countsAll = false; // the share is one of all records
};

TEST(StyleTag, SharesCountFromTheirLimitOn) {
    const std::vector<ShareCase> cases{
        {"Ultra-wide explorer", focal(20), focal(200), 50, "50% of your photos at 20 mm or wider."},
        {"Wildlife reach", focal(300), focal(299), 15, "15% of your photos at 300 mm or longer."},
        {"Prime lover", lens("50mm F1.8"), lens("70-200mm"), 60,
         "60% of your photos with fixed-focal-length lenses."},
        {"Zoom wanderer", lens("18 - 55"), lens("50mm"), 70,
         "70% of your photos with zoom lenses."},
        {"One-lens wonder", lens("50mm"), lens("85mm"), 85, "85% of your photos with your 50mm"},
        {"Phone in the pocket too", camera("iPhone 15"), camera("X-T5"), 10,
         "10% of your photos from a phone, the rest from a camera."},
        {"Motion freezer", shutter(1.0 / 1000), shutter(1.0 / 999), 40,
         "40% of your photos at 1/1000 s or faster."},
        {"Long-exposure artist", shutter(1), shutter(0.99), 5,
         "5 photos exposed for a second or longer."},
        {"ISO-fearless", iso(6400), iso(6399), 10, "10% of your photos at ISO 6400 or higher."},
        {"Early bird", taken(11, 8, 59), taken(11, 9), 30,
         "30% of your photos between 5:00 and 9:00, in the morning's soft light."},
        {"Lunch-break shooter", taken(11, 12), taken(11, 11, 59), 30,
         "30% of your photos between 12:00 and 14:00."},
        {"Golden-hour chaser", taken(11, 20, 59), taken(11, 21), 35,
         "35% of your photos between 17:00 and 21:00, when the light turns warm."},
        {"Night owl", taken(11, 4, 59), taken(11, 5), 25,
         "25% of your photos after 21:00 or before 5:00."},
        {"Night owl", taken(11, 21), taken(11, 20, 59), 25,
         "25% of your photos after 21:00 or before 5:00."},
        {"Weekend shooter", taken(10, 15), taken(11, 15), 60,
         "60% of your photos on Saturdays and Sundays."},
        {"Generous with hearts", heart(true), heart(false), 30,
         "You've favourited 30% of these photos.", true},
        {"RAW purist", raw(true), raw(false), 90, "90% of your photos are RAW files.", true},
        {"Straight-out-of-camera", raw(false), raw(true), 90,
         "90% of your photos are JPEG or HEIC.", true},
    };
    for (const ShareCase& each : cases) {
        SCOPED_TRACE(each.title);
        const auto earned = tag(mixed(each.limit, 100, each.hit, each.other), each.title);
        ASSERT_TRUE(earned);
        EXPECT_EQ(earned->reason, each.reason);
        EXPECT_GE(earned->strength, -1e-12);
        EXPECT_LE(earned->strength, 1);
        EXPECT_FALSE(tag(mixed(each.limit - 1, 100, each.hit, each.other), each.title));
        if (each.countsAll) continue;
        auto padded = mixed(each.limit, 100, each.hit, each.other);
        padded.resize(300); // records without the value do not count against it
        EXPECT_TRUE(tag(padded, each.title));
    }
}

TEST(StyleTag, FamiliesNeedTenRecordsWithTheirValueAndTagsNeedTenRecords) {
    EXPECT_TRUE(styleTags(summarized(records(9, aperture(1.4))), 9).empty());
    EXPECT_EQ(tag(records(10, aperture(1.4)), "Wide-open dreamer")->reason,
              "Usually at ƒ/1.4 or wider: soft backgrounds, thin focus.");
    for (const Fill& fill : {focal(14), lens("50mm"), camera("a"), aperture(1), shutter(1e-4),
                             iso(100), taken(11, 6)}) {
        const std::string files = "Straight-out-of-camera"; // the one tag of empty records
        EXPECT_EQ(styleTags(summarized(mixed(9, 30, fill, raw(false))), 0).size(), 1u);
    }
}

TEST(StyleTag, FocalBandsCloseAtWholeMillimetres) {
    const std::vector<std::pair<double, std::size_t>> cases{
        {4.2, 0}, {20, 0}, {20.4, 0},  {20.5, 1}, {35, 1},  {35.5, 2},
        {60, 2},  {61, 3}, {135.4, 3}, {136, 4},  {9000, 4}};
    for (const auto& [mm, band] : cases)
        EXPECT_EQ(FocalBands::indexOf(mm), band) << mm;
    // Of two bands that hold equally many the earlier one; below 45 % none.
    EXPECT_TRUE(tag(mixed(50, 100, focal(85), focal(24)), "Street & travel eye"));
    EXPECT_FALSE(tag(mixed(50, 100, focal(85), focal(24)), "Portrait-length framer"));
    auto spread = mixed(44, 72, focal(85), focal(24));
    const auto rest = records(28, focal(200));
    spread.insert(spread.end(), rest.begin(), rest.end());
    EXPECT_FALSE(tag(spread, "Portrait-length framer"));
}

TEST(StyleTag, TypicalSettingsTakeTheUpperOfTwoMiddles) {
    struct Case {
        std::string title;
        Fill inside, outside;
        std::string reason;
    };
    const std::vector<Case> cases{
        {"Wide-open dreamer", aperture(1.8), aperture(1.9),
         "Usually at ƒ/1.8 or wider: soft backgrounds, thin focus."},
        {"Bokeh fan", aperture(2.8), aperture(2.9),
         "A typical aperture of ƒ/2.8: subjects lifted off soft backgrounds."},
        {"Everything in focus", aperture(8), aperture(7.9),
         "A typical aperture of ƒ/8: sharp from front to back."},
        {"Low-light hero", iso(1600), iso(1599),
         "A typical ISO of 1600: you keep shooting when the light goes."},
        {"Daylight shooter", iso(200), iso(201), "A typical ISO of 200: good light, clean files."},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.title);
        EXPECT_EQ(tag(records(10, each.inside), each.title)->reason, each.reason);
        EXPECT_FALSE(tag(records(10, each.outside), each.title));
    }
    EXPECT_FALSE(tag(records(10, aperture(1.4)), "Bokeh fan"));
    // Five and five: the larger half decides.
    EXPECT_FALSE(tag(mixed(5, 10, aperture(1.4), aperture(4)), "Wide-open dreamer"));
    EXPECT_TRUE(tag(mixed(5, 10, iso(100), iso(1600)), "Low-light hero"));
}

TEST(StyleTag, GearRulesCountCamerasPhonesAndLenses) {
    EXPECT_TRUE(
        tag(mixed(60, 100, camera("Google PIXEL 8"), camera("D850")), "Phone in the pocket too"));
    EXPECT_FALSE(
        tag(mixed(61, 100, camera("Galaxy S24"), camera("D850")), "Phone in the pocket too"));
    auto three = mixed(40, 70, camera("a"), camera("b"));
    EXPECT_FALSE(tag(three, "Multi-camera shooter"));
    const auto more = records(30, camera("c"));
    three.insert(three.end(), more.begin(), more.end());
    EXPECT_EQ(tag(three, "Multi-camera shooter")->reason,
              "3 cameras each took at least 10% of your photos.");
    // One lens among a handful is no wonder.
    auto many = records(90, lens("50mm"));
    for (const char* name : {"24mm", "35mm", "85mm"})
        many.push_back(records(1, lens(name)).front());
    EXPECT_FALSE(tag(many, "One-lens wonder"));
    many.pop_back();
    EXPECT_TRUE(tag(many, "One-lens wonder"));
}

TEST(StyleTag, BurstsDaysAndBigDaysFollowTheClockOnTheWall) {
    // Three of ten frames follow within two seconds, whatever order they are given in.
    std::vector<ShotRecord> frames;
    for (int i = 0; i < 20; ++i)
        frames.push_back(records(1, taken(11, i)).front());
    for (int i = 0; i < 6; ++i)
        frames[static_cast<std::size_t>(19 - i)].taken = at(11, i, 0, 2);
    EXPECT_EQ(tag(frames, "Burst shooter")->reason,
              "30% of your frames came within two seconds of the one before.");
    frames[19].taken = at(11, 0, 0, 3);
    EXPECT_FALSE(tag(frames, "Burst shooter"));
    frames[19].taken = at(11, 0, 0, 2);
    frames.pop_back();
    EXPECT_FALSE(tag(frames, "Burst shooter")); // nineteen frames are too few

    const auto onDays = [](int days, int perDay) {
        std::vector<ShotRecord> list;
        for (int i = 0; i < days * perDay; ++i)
            list.push_back(records(1, taken(1 + i / perDay, 10, i % perDay)).front());
        return list;
    };
    EXPECT_EQ(tag(onDays(5, 6), "Deliberate shooter")->reason,
              "About 6 carefully chosen frames per day out shooting.");
    EXPECT_FALSE(tag(onDays(5, 7), "Deliberate shooter"));
    EXPECT_FALSE(tag(onDays(4, 6), "Deliberate shooter"));
    EXPECT_EQ(tag(records(200, taken(11, 10)), "Big-day shooter")->reason,
              "200 photos in a single day.");
    EXPECT_FALSE(tag(records(199, taken(11, 10)), "Big-day shooter"));
}

TEST(StyleTag, CurationCountsHeartsAndEdits) {
    EXPECT_EQ(tag(mixed(5, 100, heart(true), heart(false)), "Tough curator")->reason,
              "Only 5% of these photos made your favourites.");
    EXPECT_FALSE(tag(mixed(4, 99, heart(true), heart(false)), "Tough curator"));
    EXPECT_FALSE(tag(mixed(6, 100, heart(true), heart(false)), "Tough curator"));
    EXPECT_FALSE(tag(records(100), "Tough curator"));
    EXPECT_EQ(tag(records(10), "Thoughtful editor", 5)->reason, "5 edits for 10 photos taken.");
    EXPECT_FALSE(tag(records(10), "Thoughtful editor", 4));
}

TEST(StyleTag, TheMostTellingComeFirst) {
    const std::vector<StyleTag> tags{{"a", "", 0.2}, {"b", "", 0.9}, {"c", "", 0.2}};
    const auto ordered = strongest(tags);
    EXPECT_EQ(ordered[0].title, "b");
    EXPECT_EQ(ordered[1].title, "a");
    EXPECT_EQ(strongest(tags, 1).size(), 1u);
    // Further past a threshold is stronger.
    EXPECT_GT(tag(records(10, aperture(1.2)), "Wide-open dreamer")->strength,
              tag(records(10, aperture(1.8)), "Wide-open dreamer")->strength);
}

} // namespace
} // namespace kelvaro
