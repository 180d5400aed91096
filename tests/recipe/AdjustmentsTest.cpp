#include "recipe/Adjustments.h"

#include "recipe/AdjustmentCatalogue.h"
#include "recipe/MaskControls.h"

#include <gtest/gtest.h>
#include <set>

namespace kelvaro {
namespace {

using Group = AdjustmentSpec::Group;
using Format = AdjustmentSpec::Format;
using Track = AdjustmentSpec::Track;

TEST(AdjustmentCatalogueTest, HasTheRowsInTheirOrderWithTheirRanges) {
    struct Row {
        const char* id;
        double lower, upper;
        Group group;
    };
    const Row rows[] = {{"temperature", -150, 150, Group::whiteBalance},
                        {"tint", -100, 100, Group::whiteBalance},
                        {"blackAndWhite", 0, 1, Group::whiteBalance},
                        {"exposure", -4, 4, Group::basic},
                        {"contrast", -100, 100, Group::basic},
                        {"highlights", -100, 100, Group::basic},
                        {"shadows", -100, 150, Group::basic},
                        {"white", -100, 100, Group::basic},
                        {"black", -100, 100, Group::basic},
                        {"hue", -100, 100, Group::color},
                        {"saturation", -100, 100, Group::color},
                        {"vibrance", -100, 100, Group::color},
                        {"sharpness", -100, 100, Group::detail},
                        {"clarity", -100, 100, Group::effects},
                        {"dehaze", -100, 100, Group::effects},
                        {"vignette", -100, 100, Group::effects},
                        {"grain", 0, 100, Group::effects},
                        {"grainSize", -100, 100, Group::effects},
                        {"brightness", -100, 100, Group::basic},
                        {"cropLeft", 0, 0.98, Group::crop},
                        {"cropRight", 0, 0.98, Group::crop},
                        {"cropTop", 0, 0.98, Group::crop},
                        {"cropBottom", 0, 0.98, Group::crop},
                        {"straighten", -45, 45, Group::crop}};
    const auto stored = storedKeyCatalogue();
    ASSERT_EQ(stored.size(), std::size(rows));
    for (std::size_t i = 0; i < stored.size(); ++i) {
        EXPECT_EQ(stored[i].id, rows[i].id);
        EXPECT_EQ(stored[i].range, (AdjustmentRange{rows[i].lower, rows[i].upper})) << rows[i].id;
        EXPECT_EQ(stored[i].group, rows[i].group) << rows[i].id;
        EXPECT_EQ(findStoredKey(rows[i].id), &stored[i]);
    }
    EXPECT_EQ(sliderCatalogue().size(), 18u);
    EXPECT_EQ(sliderCatalogue().back().id, "grainSize");
    EXPECT_EQ(findStoredKey("Exposure"), nullptr);
}

TEST(AdjustmentCatalogueTest, EveryEntryReachesAFieldOfItsOwn) {
    Adjustments adjustments;
    double next = 1;
    for (const auto& spec : storedKeyCatalogue())
        spec.setValue(adjustments, next++);
    next = 1;
    for (const auto& spec : storedKeyCatalogue())
        EXPECT_EQ(spec.value(adjustments), next++);
    // A few by name, so that swapped fields show.
    EXPECT_EQ(adjustments.temperature, 1);
    EXPECT_EQ(adjustments.contrast, 5);
    EXPECT_EQ(adjustments.highlights, 6);
    EXPECT_EQ(adjustments.shadows, 7);
    EXPECT_EQ(adjustments.white, 8);
    EXPECT_EQ(adjustments.black, 9);
    EXPECT_EQ(adjustments.brightness, 19);
    EXPECT_EQ(adjustments.cropTop, 22);
    EXPECT_EQ(adjustments.cropBottom, 23);
}

TEST(AdjustmentCatalogueTest, PanelsHoldTheirRowsInOrder) {
    std::vector<std::string_view> rows;
    for (const Group group : AdjustmentSpec::allGroups) {
        for (const auto& spec : sliderCatalogue(group)) {
            EXPECT_EQ(spec.group, group);
            rows.push_back(spec.id);
        }
    }
    ASSERT_EQ(rows.size(), sliderCatalogue().size());
    for (std::size_t i = 0; i < rows.size(); ++i)
        EXPECT_EQ(rows[i], sliderCatalogue()[i].id);
    EXPECT_TRUE(sliderCatalogue(Group::crop).empty());
    EXPECT_EQ(title(Group::color), "Hue & Saturation");
    EXPECT_EQ(title(Group::crop), "Crop");
}

TEST(AdjustmentCatalogueTest, ShowsTheFewRowsThatDifferTheirOwnWay) {
    for (const auto& spec : storedKeyCatalogue()) {
        const Format format = spec.id == "temperature"     ? Format::kelvin
                              : spec.id == "exposure"      ? Format::ev
                              : spec.id == "blackAndWhite" ? Format::toggle
                                                           : Format::signed_;
        const Track track = spec.id == "temperature"  ? Track::temperature
                            : spec.id == "tint"       ? Track::tint
                            : spec.id == "hue"        ? Track::hue
                            : spec.id == "saturation" ? Track::saturation
                            : spec.id == "vibrance"   ? Track::vibrance
                                                      : Track::plain;
        EXPECT_EQ(spec.format, format) << spec.id;
        EXPECT_EQ(spec.track, track) << spec.id;
    }
}

TEST(AdjustmentsTest, AnyValueOrMaskMakesItEditedAndChangesEqualityAndHash) {
    const Adjustments unedited;
    const std::hash<Adjustments> hash;
    EXPECT_FALSE(isEdited(unedited));
    std::set<std::size_t> hashes{hash(unedited)};
    for (const auto& spec : storedKeyCatalogue()) {
        Adjustments changed;
        spec.setValue(changed, 0.01);
        EXPECT_TRUE(isEdited(changed)) << spec.id;
        EXPECT_NE(changed, unedited) << spec.id;
        EXPECT_TRUE(hashes.insert(hash(changed)).second) << spec.id;
    }
    Adjustments masked;
    masked.masks.resize(1);
    EXPECT_TRUE(isEdited(masked));
    EXPECT_NE(masked, unedited);
    EXPECT_TRUE(hashes.insert(hash(masked)).second);
}

TEST(AdjustmentsTest, TheVersionAndASignedZeroAreNoEdits) {
    Adjustments adjustments;
    adjustments.processVersion = 3;
    adjustments.tint = -0.0;
    EXPECT_FALSE(isEdited(adjustments));
    adjustments.processVersion = 12;
    EXPECT_EQ(adjustments, Adjustments());
    EXPECT_EQ(std::hash<Adjustments>()(adjustments), std::hash<Adjustments>()(Adjustments()));
}

TEST(RawParamsTest, ChangeWithExactlyTheValuesThatTheDecodeConsumes) {
    const std::set<std::string_view> consumed{"contrast", "white",      "black",    "dehaze",
                                              "shadows",  "highlights", "exposure", "temperature",
                                              "tint",     "sharpness"};
    for (const auto& spec : storedKeyCatalogue()) {
        Adjustments changed;
        spec.setValue(changed, 0.5);
        EXPECT_EQ(RawParams(changed) != RawParams(Adjustments()), consumed.contains(spec.id))
            << spec.id;
    }
    Adjustments masked;
    masked.masks.resize(1);
    EXPECT_EQ(RawParams(masked), RawParams());
}

TEST(MaskControlsTest, ListTheEightControlsWithTheirStoredKeys) {
    const std::string_view keys[] = {"exposure",   "temperature", "tint",    "contrast",
                                     "highlights", "shadows",     "clarity", "saturation"};
    const auto controls = maskControlCatalogue();
    ASSERT_EQ(controls.size(), std::size(keys));
    LocalMask mask;
    for (std::size_t i = 0; i < controls.size(); ++i) {
        EXPECT_EQ(controls[i].storedKey(), keys[i]);
        EXPECT_EQ(controls[i].spec.id, "mask." + std::string(keys[i]));
        const double limit = i == 0 ? 4 : 100;
        EXPECT_EQ(controls[i].spec.range, (AdjustmentRange{-limit, limit}));
        EXPECT_EQ(controls[i].spec.group, Group::basic);
        mask.*controls[i].field = static_cast<double>(i + 1);
    }
    EXPECT_EQ(mask.exposure, 1);
    EXPECT_EQ(mask.highlights, 5);
    EXPECT_EQ(mask.saturation, 8);
}

} // namespace
} // namespace kelvaro
