#include "platform/WhiteAdaptation.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvaro {
namespace {

// Planckian chromaticities from Planck's law and the CIE 1931 observer.
TEST(WhiteAdaptation, LocusFollowsPlanck) {
    const struct {
        double kelvin, x, y;
    } known[] = {{2856, 0.4476, 0.4074},
                 {4000, 0.3805, 0.3768},
                 {6500, 0.3135, 0.3237},
                 {10000, 0.2807, 0.2884}};
    for (const auto& k : known) {
        const Point xy = whiteChromaticity({k.kelvin, 0});
        EXPECT_NEAR(xy.x, k.x, 1.5e-3) << k.kelvin;
        EXPECT_NEAR(xy.y, k.y, 1.5e-3) << k.kelvin;
    }
    const Point green = whiteChromaticity({5000, 60}), neutral = whiteChromaticity({5000, 0});
    EXPECT_GT(green.y, neutral.y + 0.01); // a positive tint stands for greenish light
}

TEST(WhiteAdaptation, ControlsTurnThePictureTheirWay) {
    const auto grey = [](WhitePoint neutral) {
        const Matrix3 m = whiteAdaptationMatrix(neutral, {5000, 0});
        std::array<double, 3> rgb{};
        for (int i = 0; i < 3; ++i)
            rgb[i] = m[i][0] + m[i][1] + m[i][2];
        return rgb;
    };
    const auto same = grey({5000, 0}), warm = grey({8000, 0}), cool = grey({3500, 0});
    const auto magenta = grey({5000, 50});
    for (int i = 0; i < 3; ++i)
        EXPECT_NEAR(same[i], 1, 1e-12);
    EXPECT_GT(warm[0], 1.05);
    EXPECT_LT(warm[2], 0.9);
    EXPECT_LT(cool[0], 0.95);
    EXPECT_GT(cool[2], 1.1);
    EXPECT_LT(magenta[1], magenta[0]);
    EXPECT_LT(magenta[1], magenta[2]);
    for (const auto& rgb : {warm, cool, magenta})
        EXPECT_NEAR(0.2126 * rgb[0] + 0.7152 * rgb[1] + 0.0722 * rgb[2], 1, 1e-12);
    // Small changes make small differences: no step anywhere along the control.
    auto last = grey({2000, 0});
    for (double kelvin = 2000; kelvin <= 50000; kelvin *= 1.002) {
        const auto rgb = grey({kelvin, 0});
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(rgb[i], last[i], 0.01 * std::max(1.0, std::abs(last[i]))) << kelvin;
        last = rgb;
    }
}

} // namespace
} // namespace kelvaro
