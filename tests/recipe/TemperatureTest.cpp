#include "recipe/AdjustmentCatalogue.h"
#include "recipe/DisplayText.h"
#include "recipe/Kelvin.h"
#include "recipe/MaskControls.h"
#include "recipe/NumberText.h"

#include <clocale>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace kelvaro {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(KelvinTest, ShiftsByMiredAndStaysBetweenItsEnds) {
    struct Case {
        double asShot, shift, kelvin;
    };
    for (const auto& [asShot, shift, kelvin] : {
             Case{5000, 150, 20000},      // 200 − 150 = 50 mired
             Case{5000, -150, 1e6 / 350}, // 2,857.14…
             Case{2000, 150, 1e6 / 350},  // 500 − 150
             Case{10000, 150, 50000},     // −50 mired: nothing is that hot
             Case{10000, 99, 50000},      // exactly 1 mired
             Case{10000, 80, 50000},      // 20 mired
             Case{10000, 79, 1e6 / 21},   // just below the end
             Case{2000, -1, 2000},        // 501 mired
             Case{1000, 0, 2000},         //
             Case{0, 0, 2000},            // infinitely many mired
             Case{nan, 0, 2000},          // the camera said nothing of use
         }) {
        EXPECT_NEAR(kelvinFromShift(asShot, shift), kelvin, 1e-9 * kelvin)
            << asShot << " " << shift;
    }
}

TEST(KelvinTest, TypedTemperaturesLandOnTheNearestEnd) {
    struct Case {
        double asShot, entered, shift;
    };
    for (const auto& [asShot, entered, shift] : {
             Case{5000, 5000, 0}, Case{5000, 10000, 100}, Case{5000, 100000, 150},
             Case{5000, 1000, -150}, Case{5000, -3, -150}, Case{5000, nan, -150},
             Case{10000, 90000, 80}, // its range ends at 50,000 K, which is 20 mired
         }) {
        EXPECT_NEAR(shiftFromKelvin(asShot, entered), shift, 1e-9) << asShot << " " << entered;
    }
    EXPECT_TRUE(std::isfinite(shiftFromKelvin(0, 5000)));
    EXPECT_TRUE(std::isfinite(shiftFromKelvin(nan, 5000)));
}

TEST(KelvinTest, NamesTheRangeOfThePhoto) {
    EXPECT_EQ(kelvinRangeText(5000),
              "2857–20000 K. Values outside this range use the nearest limit.");
}

TEST(DisplayTextTest, ShowsValuesInTheirFormat) {
    struct Case {
        const char* id;
        double value;
        const char* text;
    };
    for (const auto& [id, value, text] : {
             Case{"tint", 0, "+0"},
             Case{"tint", -0.0, "+0"},
             Case{"tint", -0.4, "+0"},
             Case{"tint", -0.6, "-1"},
             Case{"tint", 12.4, "+12"},
             Case{"tint", -100, "-100"},
             Case{"exposure", 0, "+0.00 EV"},
             Case{"exposure", -0.004, "+0.00 EV"},
             Case{"exposure", -0.006, "-0.01 EV"},
             Case{"exposure", 1.5, "+1.50 EV"},
             Case{"exposure", -4, "-4.00 EV"},
             Case{"temperature", 0, "5400 K"},
             Case{"temperature", -150, "2983 K"}, // 185.185… + 150 = 335.185… mired
             Case{"blackAndWhite", 1, ""},
         }) {
        EXPECT_EQ(displayText(*findStoredKey(id), value, 5400), text) << id << " " << value;
    }
    EXPECT_EQ(displayText(*findStoredKey("temperature"), 0, 5400.5), "5401 K"); // away from zero
    EXPECT_EQ(displayText(maskControlCatalogue()[1].spec, 7, 5400), "+7");
}

TEST(NumberTextTest, ReadsWholeTextsOnly) {
    const double infinite = std::numeric_limits<double>::infinity();
    struct Case {
        const char* text;
        std::optional<double> value;
    };
    for (const auto& [text, value] : {
             Case{"1.5", 1.5},
             Case{"+2", 2.0},
             Case{"-1e1", -10.0},
             Case{"1e400", infinite},
             Case{"-1e400", -infinite},
             Case{"1e-400", 0.0},
             Case{"1e99999999999999999999", infinite},
             Case{"0.0000001e-99999999999999999999", 0.0},
             Case{"inf", infinite},
             Case{"", {}},
             Case{"+-1", {}},
             Case{"1,5", {}},
             Case{"1.5 ", {}},
             Case{" 1", {}},
             Case{"0x10", {}},
             Case{"1e", {}},
             Case{"-", {}},
         }) {
        EXPECT_EQ(numberFromText(text), value) << text;
    }
    EXPECT_TRUE(std::isnan(numberFromText("nan").value()));
}

TEST(NumberTextTest, DoesNotDependOnTheLocale) {
    for (const char* name : {"de_DE.UTF-8", "fr_FR.UTF-8", "C"}) {
        if (!std::setlocale(LC_ALL, name)) continue; // not every machine has every locale
        EXPECT_EQ(numberText(0.1), "0.1");
        EXPECT_EQ(numberFromText("0.25"), 0.25);
        EXPECT_EQ(displayText(*findStoredKey("exposure"), 1.5, 5000), "+1.50 EV");
    }
    std::setlocale(LC_ALL, "C");
    EXPECT_EQ(numberText(1234567.0), "1234567");
    EXPECT_EQ(numberText(5e-324), "5e-324");
}

} // namespace
} // namespace kelvaro
