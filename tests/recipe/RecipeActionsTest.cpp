#include "recipe/RecipeActions.h"

#include "recipe/AdjustmentCatalogue.h"
#include "recipe/MaskControls.h"

#include <gtest/gtest.h>

namespace kelvaro {
namespace {

using Group = AdjustmentSpec::Group;

// Every value different from 0 and from those of another base; as many masks as asked for.
Adjustments filled(double base, std::size_t masks) {
    Adjustments adjustments;
    for (const auto& spec : storedKeyCatalogue())
        spec.setValue(adjustments, base++);
    adjustments.masks.resize(masks);
    return adjustments;
}

TEST(PasteTest, ReplacesAdjustmentsAndMasksAndKeepsTheTargetsOwnGeometry) {
    const Adjustments clipboard = filled(1, 2), target = filled(101, 1);
    const Adjustments result = pasted(clipboard, target);
    for (const auto& spec : storedKeyCatalogue()) {
        const bool own = spec.id.starts_with("crop") || spec.id == "straighten";
        EXPECT_EQ(spec.value(result), spec.value(own ? target : clipboard)) << spec.id;
    }
    EXPECT_EQ(result.masks, clipboard.masks);
    EXPECT_EQ(pasted(clipboard, target, PasteGeometry::replace), clipboard);
}

TEST(PasteTest, SaysHowManyPhotosWereMeant) {
    EXPECT_EQ(pastedNotice(1), "Adjustments pasted");
    EXPECT_EQ(pastedNotice(3), "Adjustments pasted to 3 photos");
}

TEST(RevertTest, ClearsEveryValueAndKeepsMasks) {
    const Adjustments reverted = revertedToOriginal(filled(1, 2));
    Adjustments expected;
    expected.masks.resize(2);
    EXPECT_EQ(reverted, expected);
    EXPECT_EQ(revertedToOriginal(reverted), expected);
    EXPECT_FALSE(isEdited(withoutMasks(reverted)));
    EXPECT_EQ(withoutMasks(filled(1, 2)), filled(1, 0));
}

TEST(StrokesTest, EverythingElseStaysWithoutThem) {
    Adjustments painted = filled(1, 2);
    painted.processVersion = 3;
    LocalMask& mask = painted.masks[1];
    mask.id.bytes[3] = 7;
    mask.name = "Sky";
    mask.enabled = false;
    mask.invert = true;
    mask.amount = 60;
    double value = 5;
    for (const MaskControl& control : maskControlCatalogue())
        mask.*control.field = ++value;
    MaskComponent shape{
        {}, MaskComponent::Kind::radial, MaskComponent::Mode::subtract, true, {1, 2}, {3, 4}, 5, 6,
        {}};
    shape.id.bytes[2] = 9;
    mask.components = {shape, MaskComponent{}};
    const Adjustments bare = painted;
    for (MaskComponent& component : mask.components)
        component.strokes = {{{{0.1, 0.2}}, 0.05, 50, 100, false}};
    EXPECT_NE(painted, bare);
    EXPECT_EQ(withoutStrokes(painted), bare);
}

TEST(PanelResetTest, ClearsItsGroupOnly) {
    for (const Group group : AdjustmentSpec::allGroups) {
        const Adjustments reset = withPanelReset(filled(1, 1), group);
        for (const auto& spec : storedKeyCatalogue()) {
            EXPECT_EQ(spec.value(reset) == 0, spec.group == group) << spec.id;
        }
    }
    EXPECT_EQ(withPanelReset(filled(30, 0), Group::basic).brightness, 0);
}

TEST(SetFromTextTest, SetsOneKeyWithinItsRange) {
    struct Case {
        const char *key, *text;
        double value;
    };
    for (const auto& [key, text, value] : {
             Case{"exposure", "1.5", 1.5},
             Case{"exposure", "+9", 4},
             Case{"shadows", "151", 150},
             Case{"shadows", "-101", -100},
             Case{"grain", "-5", 0},
             Case{"cropLeft", "1e-1", 0.1},
             Case{"straighten", "-1e-999", 0},
         }) {
        Adjustments adjustments;
        ASSERT_TRUE(setFromText(adjustments, key, text)) << key;
        EXPECT_EQ(findStoredKey(key)->value(adjustments), value) << key << "=" << text;
    }
}

TEST(SetFromTextTest, RefusesWithOneClearSentenceAndChangesNothing) {
    struct Case {
        const char *key, *text, *message;
    };
    for (const auto& [key, text, message] : {
             Case{"exposures", "1", "There is no adjustment “exposures”."},
             Case{"processVersion", "1", "There is no adjustment “processVersion”."},
             Case{"exposure", "bright", "“bright” is not a number for “exposure”."},
             Case{"exposure", "", "“” is not a number for “exposure”."},
             Case{"exposure", "1,5", "“1,5” is not a number for “exposure”."},
             Case{"exposure", "nan", "Adjustment must be finite."},
             Case{"exposure", "-inf", "Adjustment must be finite."},
             Case{"exposure", "1e400", "Adjustment must be finite."},
         }) {
        Adjustments adjustments = filled(1, 0);
        const auto set = setFromText(adjustments, key, text);
        ASSERT_FALSE(set) << key << "=" << text;
        EXPECT_EQ(set.error(), (Failure{FailureKind::malformed, message}));
        EXPECT_EQ(adjustments, filled(1, 0));
    }
}

} // namespace
} // namespace kelvaro
