#include "develop/ToneLevels.h"

#include "develop/Pictures.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace kelvaro {
namespace {

using test::rasterOf;

// One row of greys whose luminance lies the given number of stops from middle grey.
template<class Stops>
ToneLevels levelsOf(int count, Stops stops) {
    const Raster row = rasterOf({count, 1}, false, [&](int x, int) {
        const float grey = 0.18f * std::exp2(float(stops(x)));
        return test::Pixel{grey, grey, grey, 1};
    });
    return measuredLevels(row.view());
}

TEST(ToneLevels, ArePercentilesWithTheLowerNeighbour) {
    // 200 values -8, -7.95 … in shuffled order (73 and 200 have no common factor): indices 2 and
    // 198.
    const auto levels = levelsOf(200, [](int x) { return -8 + 0.05 * (x * 73 % 200); });
    EXPECT_NEAR(levels.lo, -8 + 0.05 * 2, 1e-5);
    EXPECT_NEAR(levels.hi, -8 + 0.05 * 198, 1e-5);
    // 17 values: indices 0 and 16.
    const auto few = levelsOf(17, [](int x) { return -4 + 0.4 * x; });
    EXPECT_NEAR(few.lo, -4, 1e-5);
    EXPECT_NEAR(few.hi, 2.4, 1e-5);
}

TEST(ToneLevels, AreClamped) {
    EXPECT_EQ(levelsOf(100, [](int) { return -1.0; }), (ToneLevels{-2.5, 0.5}));
    EXPECT_EQ(levelsOf(100, [](int x) { return x < 50 ? -20.0 : 9.0; }), (ToneLevels{-10, 5}));
}

TEST(ToneLevels, NeedSeventeenPositiveFinitePixels) {
    const float infinity = std::numeric_limits<float>::infinity();
    const auto levels = [&](int good) {
        const float rest[] = {0, -1, infinity, std::nanf("")};
        const Raster raster = rasterOf({100, 2}, false, [&](int x, int y) {
            const float grey = y * 100 + x < good ? 0.18f * 4 : rest[x % 4];
            return test::Pixel{grey, grey, grey, 1};
        });
        return measuredLevels(raster.view());
    };
    EXPECT_EQ(levels(16), ToneLevels{});
    EXPECT_EQ(levels(17).lo, -2.5);
    EXPECT_NEAR(levels(17).hi, 2, 1e-6);
    EXPECT_EQ(measuredLevels(Raster({0, 0, 0, 0}, false).view()), (ToneLevels{-6, 2.5}));
}

TEST(RegionalGain, FollowsItsDefinition) {
    const struct {
        double d, shadows, highlights, stops;
    } cases[] = {
        {0, 1, 0, 0},         // middle grey is the end of the shadows
        {-3.5, 1, 0, 1.65},   // half of 3.3
        {-3.5, 1.5, 0, 2.0},  // half of 3.3 + 1.4 × 0.5
        {-3.5, -1, 0, -0.75}, // half of 1.5
        {-9, 1, 0, 2.64},     // 0.6 + 0.4 × 0.5 of 3.3
        {-12, 1, 0, 1.98},    // 0.6 of 3.3
        {2, 0, -1, -0.875},   // half of 1.75
        {2, 0, 1, 0.4},       // half of 0.8
        {5, 1, -0.5, -0.875}, // all of 1.75 × 0.5, no shadow
    };
    for (const auto& c : cases)
        EXPECT_NEAR(regionalGainStops(c.d, c.shadows, c.highlights), c.stops, 1e-12)
            << "at " << c.d << " with " << c.shadows << ", " << c.highlights;
}

TEST(ToneEndpoints, WidthsComeFromTheLevels) {
    const struct {
        ToneLevels levels;
        double z, w;
    } cases[] = {{{-6, 2.5}, 3, 2}, {{-3.2, 2}, 2.2, 1.5}, {{-2.5, 0.5}, 1.5, 1.5},
                 {{-4, 3}, 3, 2.5}, {{-10, 3.5}, 3, 3},    {{-10, 5}, 3, 3}};
    for (const auto& c : cases) {
        const ToneEndpoints e = toneEndpoints(c.levels, 0, 0, 0);
        EXPECT_NEAR(e.x, c.levels.lo, 1e-12);
        EXPECT_NEAR(e.y, c.levels.hi, 1e-12);
        EXPECT_NEAR(e.z, c.z, 1e-12) << c.levels.lo;
        EXPECT_NEAR(e.w, c.w, 1e-12) << c.levels.hi;
    }
}

TEST(ToneEndpoints, FollowShiftAndGain) {
    // Black at -6 + 2.5 = -3.5 is lifted by 1.65, white at 2.5 + 2.5 = 5 lowered by 1.75.
    const ToneEndpoints e = toneEndpoints({}, 2.5, 1, -1);
    EXPECT_NEAR(e.x, -3.5 + 1.65, 1e-12);
    EXPECT_NEAR(e.y, 5 - 1.75, 1e-12);
    EXPECT_NEAR(e.z, 3, 1e-12); // the widths belong to the photo as measured
    EXPECT_NEAR(e.w, 2, 1e-12);
}

TEST(ToneEndpoints, KeepTheirDistanceAboutTheMiddle) {
    // t = 4.5 / 7, smoothstep 0.708455, so that black rises by 0.291545 × 3.3 to -1.537901; white
    // stays at 0.5. 2.037901 apart instead of 3: moved to -0.518951 ± 1.5.
    const ToneEndpoints e = toneEndpoints({-2.5, 0.5}, 0, 1, 0);
    EXPECT_NEAR(e.x, -2.018951, 2e-6);
    EXPECT_NEAR(e.y, 0.981049, 2e-6);
}

} // namespace
} // namespace kelvaro
