#include "recipe/LocalMask.h"

#include "fakes/SeededRandom.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace kelvaro {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinite = std::numeric_limits<double>::infinity();
using Kind = MaskComponent::Kind;

TEST(SanitisedTest, BringsNumbersOfAShapeIntoTheirLimits) {
    struct Case {
        const char* what;
        double MaskComponent::*field;
        double given, expected;
    };
    for (const auto& [what, field, given, expected] : {
             Case{"turns", &MaskComponent::angle, 725, 5},
             Case{"turns backwards", &MaskComponent::angle, -370, -10},
             Case{"no angle", &MaskComponent::angle, nan, 0},
             Case{"endless angle", &MaskComponent::angle, -infinite, 0},
             Case{"harder than hard", &MaskComponent::feather, -3, 0},
             Case{"softer than soft", &MaskComponent::feather, 250, 100},
             Case{"inside", &MaskComponent::feather, 33.5, 33.5},
             Case{"no feather", &MaskComponent::feather, infinite, 50},
         }) {
        MaskComponent component;
        component.*field = given;
        EXPECT_EQ(sanitised(component).*field, expected) << what;
    }
}

TEST(SanitisedTest, KeepsPointsWithinReachAndRadiiPositive) {
    struct Case {
        Kind kind;
        MaskPoint given, expected; // of `end`
    };
    for (const auto& [kind, given, expected] : {
             Case{Kind::linear, {9, -7}, {5, -4}},
             Case{Kind::linear, {-0.2, 0}, {-0.2, 0}},
             Case{Kind::radial, {-0.2, 0}, {0.2, 0.001}},
             Case{Kind::radial, {-9, nan}, {4, 0.001}}, // clamped first, then made positive
             Case{Kind::brush, {infinite, -infinite}, {0, 0}},
         }) {
        MaskComponent component;
        component.kind = kind;
        component.start = given;
        component.end = given;
        EXPECT_EQ(sanitised(component).end, expected);
        const MaskPoint plain{std::isfinite(given.x) ? std::min(std::max(given.x, -4.0), 5.0) : 0,
                              std::isfinite(given.y) ? std::min(std::max(given.y, -4.0), 5.0) : 0};
        EXPECT_EQ(sanitised(component).start, plain);
    }
}

TEST(SanitisedTest, BringsStrokesIntoTheirLimitsAndDropsEmptyOnes) {
    MaskComponent component;
    component.strokes = {{{}, 0.1, 10, 10, false},
                         {{{nan, 6}, {0.5, -9}}, 1.5, 120, -1, true},
                         {{{0, 0}}, nan, nan, infinite, false}};
    const auto strokes = sanitised(component).strokes;
    const BrushStroke defaults;
    ASSERT_EQ(strokes.size(), 2u);
    EXPECT_EQ(strokes[0], (BrushStroke{{{0, 5}, {0.5, -4}}, 1, 100, 0, true}));
    EXPECT_EQ(strokes[1],
              (BrushStroke{{{0, 0}}, defaults.radius, defaults.feather, defaults.flow, false}));
}

TEST(NewMaskTest, EachGetsAnIdentifierOfItsOwn) {
    SeededRandom random;
    const LocalMask first = newMask(random), second = newMask(random);
    EXPECT_NE(first.id, second.id);
    EXPECT_EQ(first.name, "Mask");
    const auto ellipse = newComponent(Kind::radial, MaskComponent::Mode::subtract, random);
    EXPECT_NE(ellipse.id, Uuid());
    EXPECT_EQ(ellipse.end, (MaskPoint{0.001, 0.001}));
}

TEST(UuidTest, RandomOnesCarryVersionAndVariant) {
    SeededRandom random;
    for (int i = 0; i < 100; ++i) {
        const std::string text = toText(randomUuid(random));
        EXPECT_EQ(text[14], '4') << text;
        EXPECT_NE(std::string("89AB").find(text[19]), std::string::npos) << text;
    }
}

TEST(UuidTest, ReadsBackItsTextInEitherCaseAndNothingElse) {
    const std::string text = "0123ABCD-4567-89EF-0011-AABBCCDDEEFF";
    const auto uuid = uuidFromText(text);
    ASSERT_TRUE(uuid);
    EXPECT_EQ(uuid->bytes[1], 0x23);
    EXPECT_EQ(uuid->bytes[15], 0xFF);
    EXPECT_EQ(toText(*uuid), text);
    EXPECT_EQ(uuidFromText("0123abcd-4567-89ef-0011-aabbccddeeff"), uuid);
    for (const char* wrong :
         {"", "0123ABCD", "0123ABCD-4567-89EF-0011-AABBCCDDEEF",
          "0123ABCDE4567-89EF-0011-AABBCCDDEEFF", "0123ABCD-4567-89EF-0011-AABBCCDDEEFG",
          "{123ABCD-4567-89EF-0011-AABBCCDDEEFF"}) {
        EXPECT_FALSE(uuidFromText(wrong)) << wrong;
    }
}

TEST(MaskHashTest, FollowsEveryField) {
    LocalMask mask;
    mask.components.resize(1);
    mask.components[0].strokes.push_back({{{0.1, 0.2}}, 0.1, 50, 100, false});
    const auto before = hashOf(mask);
    const auto changed = [&](auto change) {
        LocalMask copy = mask;
        change(copy);
        EXPECT_NE(copy, mask);
        return hashOf(copy);
    };
    EXPECT_NE(before, changed([](LocalMask& m) { m.id.bytes[3] = 1; }));
    EXPECT_NE(before, changed([](LocalMask& m) { m.name = "Sky"; }));
    EXPECT_NE(before, changed([](LocalMask& m) { m.enabled = false; }));
    EXPECT_NE(before, changed([](LocalMask& m) { m.invert = true; }));
    EXPECT_NE(before, changed([](LocalMask& m) { m.amount = 99; }));
    EXPECT_NE(before, changed([](LocalMask& m) { m.clarity = 1; }));
    EXPECT_NE(before,
              changed([](LocalMask& m) { m.components[0].mode = MaskComponent::Mode::subtract; }));
    EXPECT_NE(before, changed([](LocalMask& m) { m.components[0].end.y = 1; }));
    EXPECT_NE(before, changed([](LocalMask& m) { m.components[0].strokes[0].points[0].x = 1; }));
    EXPECT_NE(before, changed([](LocalMask& m) { m.components[0].strokes[0].erase = true; }));
    EXPECT_EQ(before, hashOf(LocalMask(mask)));
}

} // namespace
} // namespace kelvaro
