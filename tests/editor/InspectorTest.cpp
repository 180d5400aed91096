#include "editor/Inspector.h"

#include "editor/KelvinField.h"
#include "editor/SliderMapping.h"
#include "editor/TrackTint.h"
#include "recipe/AdjustmentCatalogue.h"
#include "recipe/RecipeTexts.h"

#include <gtest/gtest.h>

namespace kelvaro {
namespace {

TEST(Inspector, PanelsFollowTheCatalogue) {
    const auto panels = inspectorPanels({}, {true, 5000});
    std::vector<std::string_view> titles;
    std::size_t rows = 0;
    for (const InspectorPanel& panel : panels) {
        titles.push_back(panel.title);
        rows += panel.rows.size();
        EXPECT_FALSE(panel.isChanged);
        EXPECT_TRUE(panel.note.empty()) << panel.title;
    }
    EXPECT_EQ(titles, (std::vector<std::string_view>{"White Balance", "Basic", "Hue & Saturation",
                                                     "Detail", "Effects", "Crop"}));
    EXPECT_EQ(rows, 18u);
    EXPECT_EQ(panels[0].rows[0].valueText, "5000 K");
    EXPECT_TRUE(panels[0].rows[0].opensKelvinField);
    EXPECT_TRUE(panels[0].rows[2].isSwitch);
    EXPECT_EQ(panels[1].rows[0].valueText, "+0.00 EV");
    EXPECT_EQ(panels[1].rows[3].zeroPosition, 0.4); // shadows: 100 of 250
    EXPECT_EQ(panels[4].rows[3].zeroPosition, 0);   // grain
    EXPECT_EQ(panels[5].straightenText, "+0.0°");
}

TEST(Inspector, ShowsWhatChangedAndTheNotes) {
    Adjustments edit;
    edit.brightness = 30;
    edit.straighten = -2.25;
    edit.sharpness = 20;
    edit.temperature = 150;
    const auto panels = inspectorPanels(edit, {false, 5000});
    const bool changed[] = {true, true, false, true, false, true};
    for (std::size_t i = 0; i < panels.size(); ++i) {
        EXPECT_EQ(panels[i].isChanged, changed[i]) << panels[i].title;
    }
    EXPECT_EQ(panels[0].rows[0].valueText, "20000 K");
    EXPECT_EQ(panels[1].note, "Earlier Brightness adjustment retained. Reset Basic to clear it.");
    EXPECT_EQ(panels[3].note,
              "Detail uses Apple's RAW engine and has no effect on JPEG or HEIC files.");
    EXPECT_TRUE(panels[3].rows[0].isChanged); // keeps its value all the same
    LocalMask mask;
    mask.exposure = -1.5;
    const auto rows = maskRows(mask);
    ASSERT_EQ(rows.size(), 8u);
    EXPECT_EQ(rows[0].valueText, "-1.50 EV");
    EXPECT_EQ(rows[1].valueText, "+0"); // a mask's temperature has no kelvins
}

TEST(Inspector, TracksAreTintedFromEndToEnd) {
    for (const AdjustmentSpec& spec : sliderCatalogue()) {
        const auto stops = trackTint(spec.track);
        EXPECT_EQ(stops.empty(), spec.track == AdjustmentSpec::Track::plain);
        if (stops.empty()) continue;
        EXPECT_EQ(stops.front().position, 0);
        EXPECT_EQ(stops.back().position, 1);
    }
    // Warm to the right, magenta to the right.
    EXPECT_GT(trackTint(AdjustmentSpec::Track::temperature).back().red,
              trackTint(AdjustmentSpec::Track::temperature).back().blue);
    EXPECT_LT(trackTint(AdjustmentSpec::Track::tint).back().green,
              trackTint(AdjustmentSpec::Track::tint).front().green);
}

// A row of 200 points over −100 … 100: a value for each point, and a catch of 6 points.
TEST(Slider, DragsWithoutAJumpCatchesAtZeroAndStopsAtTheEnds) {
    const AdjustmentRange range{-100, 100};
    SliderDrag drag(range, -10, 200, 50);
    EXPECT_NEAR(drag.movedTo(50, false), -10, 1e-9);
    EXPECT_NEAR(drag.movedTo(59, false), -1, 1e-9);
    for (const double x : {60.5, 63.0, 65.5}) {
        EXPECT_EQ(drag.movedTo(x, false), 0) << x;
    }
    EXPECT_NEAR(drag.movedTo(67, false), 1, 1e-9);
    EXPECT_NEAR(drag.movedTo(77, true), 2, 1e-9); // ten points are one value now
    EXPECT_EQ(drag.movedTo(900, false), 100);
    EXPECT_NEAR(drag.movedTo(895, false), 95, 1e-9); // turns back at once
    EXPECT_EQ(drag.movedTo(-9000, false), -100);

    SliderDrag fromZero(range, 0, 200, 0);
    EXPECT_EQ(fromZero.movedTo(2, false), 0);
    EXPECT_NEAR(fromZero.movedTo(4, false), 1, 1e-9);
    SliderDrag grain({0, 100}, 0, 200, 0); // the range ends at 0: nothing to pass
    EXPECT_NEAR(grain.movedTo(2, false), 1, 1e-9);
}

TEST(Slider, PositionsStepsAndTypedValues) {
    const AdjustmentSpec& exposure = *findStoredKey("exposure");
    const AdjustmentSpec& contrast = *findStoredKey("contrast");
    const AdjustmentSpec& grain = *findStoredKey("grain");
    EXPECT_EQ(sliderValue(contrast.range, 0.75), 50);
    EXPECT_EQ(sliderPosition(contrast.range, 50), 0.75);
    EXPECT_EQ(sliderValue(contrast.range, -3), -100);
    const struct {
        const AdjustmentSpec& spec;
        double value, steps;
        bool fine;
        double expected;
    } steps[] = {
        {contrast, 3.4, 1, false, 4},     {contrast, 3.4, -1, false, 3},
        {contrast, 5, 1, false, 6},       {contrast, -0.5, 3, false, 0},
        {contrast, 99.5, 10, false, 100}, {contrast, 5, 1, true, 5.1},
        {exposure, 0.3, 1, false, 0.35},  {exposure, 1, -10, false, 0.5},
        {grain, 0, -1, false, 0},
    };
    for (const auto& s : steps) {
        EXPECT_NEAR(stepped(s.spec, s.value, s.steps, s.fine), s.expected, 1e-9)
            << s.spec.id << " " << s.value;
    }
    EXPECT_EQ(typedValue(exposure, "+1,5 ev"), 1.5);
    EXPECT_EQ(typedValue(exposure, "−9"), -4);
    EXPECT_EQ(typedValue(contrast, "12.25"), 12.25);
    for (const char* text : {"", "EV", "1e400", "12 x", "--3"}) {
        EXPECT_EQ(typedValue(contrast, text), std::nullopt) << text;
    }
}

TEST(Kelvin, TheFieldTakesWhatPeopleType) {
    const KelvinField field = kelvinField(0, 5000);
    EXPECT_EQ(field.title, "Temperature in Kelvin");
    EXPECT_EQ(field.prompt, "Enter temperature in Kelvin");
    EXPECT_EQ(field.value, "5000");
    EXPECT_EQ(field.rangeText, "2857–20000 K. Values outside this range use the nearest limit.");
    for (const char* text : {"4000", "4,000 K", "4000k", "4000.0"}) {
        EXPECT_EQ(temperatureFromKelvinText(text, 5000), -50) << text; // 200 − 250 mired
    }
    EXPECT_EQ(temperatureFromKelvinText("100000", 5000), 150);
    EXPECT_EQ(temperatureFromKelvinText("1000", 5000), -150);
    for (const char* text : {"", "0", "-5000", "warm"}) {
        EXPECT_EQ(temperatureFromKelvinText(text, 5000), std::nullopt) << text;
    }
}

} // namespace
} // namespace kelvaro
