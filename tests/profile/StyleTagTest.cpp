#include "TagCases.h"

#include "profile/FocalBands.h"

#include <gtest/gtest.h>

#include <set>

namespace kelvaro {
namespace {

using namespace test;

std::optional<StyleTag> tag(const std::vector<ShotRecord>& list, const std::string& title,
                            std::int64_t edits = 0) {
    return earned({"", list, edits}, title);
}

TEST(StyleTag, EachIsEarnedFromItsThresholdOn) {
    std::set<int> rules;
    for (const TagCase& each : tagCases()) {
        SCOPED_TRACE(each.title + ", " + each.threshold);
        rules.insert(each.rule);
        EXPECT_FALSE(earned(each.shortOf, each.title)) << each.shortOf.told;
        const auto exact = earned(each.exactly, each.title), past = earned(each.past, each.title);
        ASSERT_TRUE(exact && past);
        EXPECT_EQ(exact->reason, each.reason);
        for (const double strength : {exact->strength, past->strength}) {
            EXPECT_GE(strength, -1e-12);
            EXPECT_LE(strength, 1);
        }
        // Further in is stronger; a count of cameras and a limit on photos are no further in.
        if (each.rule != 7 && each.rule != 25) {
            EXPECT_GT(past->strength, exact->strength);
        }
    }
    EXPECT_EQ(rules.size(), 28u);
}

TEST(StyleTag, RecordsWithoutTheValueDoNotCountAgainstIt) {
    for (const TagCase& each : tagCases()) {
        // Hearts, edits and RAW files are shares of all records.
        if (each.rule >= 24) continue;
        SCOPED_TRACE(each.title);
        TagPhotos padded = each.exactly;
        padded.records.resize(padded.records.size() + 300);
        EXPECT_TRUE(earned(padded, each.title));
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
    EXPECT_FALSE(tag(records(10, aperture(1.4)), "Bokeh fan"));
    // Five and five: the larger half decides.
    EXPECT_FALSE(tag(mixed(5, 10, aperture(1.4), aperture(4)), "Wide-open dreamer"));
    EXPECT_TRUE(tag(mixed(5, 10, iso(100), iso(1600)), "Low-light hero"));
}

TEST(StyleTag, GearRulesCountCamerasPhonesAndLenses) {
    EXPECT_TRUE(tag(mixed(20, 100, camera("Galaxy S24"), camera("X")), "Phone in the pocket too"));
    EXPECT_FALSE(tag(mixed(50, 100, camera("a"), camera("b")), "Multi-camera shooter"));
    // One lens among a handful is no wonder.
    auto many = records(90, lens("50mm"));
    for (const char* name : {"24mm", "35mm", "85mm"})
        many.push_back(records(1, lens(name)).front());
    EXPECT_FALSE(tag(many, "One-lens wonder"));
    many.pop_back();
    EXPECT_TRUE(tag(many, "One-lens wonder"));
}

TEST(StyleTag, BurstsNeedTwentyFramesAndDeliberationFiveDays) {
    // Nineteen frames at once are no burst yet.
    EXPECT_FALSE(tag(records(19, taken(11, 10)), "Burst shooter"));
    EXPECT_TRUE(tag(records(20, taken(11, 10)), "Burst shooter"));
    EXPECT_FALSE(tag(mixed(6, 12, taken(1, 10), taken(2, 10)), "Deliberate shooter"));
    EXPECT_FALSE(tag(records(100), "Tough curator")); // without a single heart
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
