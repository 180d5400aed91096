#include "develop/HazeModel.h"

#include "develop/Pictures.h"
#include "develop/ScalarField.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace kelvaro {
namespace {

using test::rasterOf;

constexpr std::array<double, 3> kAir{0.82, 0.86, 0.9};

double smoothstep(double from, double to, double x) {
    const double t = std::clamp((x - from) / (to - from), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

// A landscape: the haze grows with the height in the picture, the ground is a chequer of dark and
// coloured patches that holds a black pixel in every neighbourhood; the top is nothing but haze.
constexpr PixelSize kSize{160, 120};
double transmissionAt(int y) {
    return 1 - smoothstep(20, 100, y);
}

std::array<double, 3> sceneAt(int x, int y) {
    if ((x / 3 + y / 3) % 2 == 0) return {0, 0, 0};
    return {0.1 + 0.4 * ((x / 10) % 2), 0.3, 0.05 + 0.3 * ((y / 10) % 2)};
}

Raster hazyLandscape() {
    return rasterOf(kSize, false, [](int x, int y) {
        const double t = transmissionAt(y);
        const auto scene = sceneAt(x, y);
        test::Pixel pixel{0, 0, 0, 1};
        for (std::size_t k = 0; k < 3; ++k)
            pixel[k] = float(scene[k] * t + kAir[k] * (1 - t));
        return pixel;
    });
}

double depthAt(const Raster& picture, const Raster& map, const std::array<double, 3>& air, int x,
               int y) {
    const auto pixel = test::pixelAt(picture, x, y), model = test::pixelAt(map, x, y);
    double guide = 0;
    for (std::size_t k = 0; k < 3; ++k)
        guide += std::max(0.0, double(pixel[k])) / air[k] / 3;
    guide = std::min(guide, 1.5);
    return std::clamp(std::min(double(model[0]) * guide + double(model[1]), double(model[2])), 0.0,
                      1.0);
}

TEST(HazeModel, FindsTheAirlightOfAMadeLandscape) {
    const Raster picture = hazyLandscape();
    const auto air = measuredAirlight(picture.view());
    ASSERT_TRUE(air);
    for (std::size_t k = 0; k < 3; ++k)
        EXPECT_NEAR((*air)[k], kAir[k], 0.01);
}

// A lamp or a cream wall is no haze: its brightness counts, its colour only in part.
TEST(HazeModel, TakesNoSaturatedAirlight) {
    const auto airOf = [](double r, double g, double b) {
        const Raster flat = rasterOf({30, 20}, false, [=](int, int) {
            return test::Pixel{float(r), float(g), float(b), 1};
        });
        return *measuredAirlight(flat.view());
    };
    const auto wall = airOf(0.9, 0.9, 0.6); // a saturation of 1/3: 0.12 + 0.35 × 0.2133
    EXPECT_NEAR(wall[0], 0.9, 1e-6);
    EXPECT_NEAR(wall[2], 0.9 * (1 - 0.19467), 1e-5);
    const auto lamp = airOf(1, 0.5, 0.2);
    EXPECT_NEAR(lamp[2], 1 - 0.358, 1e-5);
    EXPECT_NEAR((1 - lamp[1]) / (1 - lamp[2]), 0.5 / 0.8, 1e-5) << "the same hue";
    const auto haze = airOf(0.72, 0.76, 0.8);
    EXPECT_NEAR(haze[0], 0.72, 1e-6);
}

TEST(HazeModel, FindsTheDepthOfAMadeLandscape) {
    const Raster picture = hazyLandscape();
    const Raster map = fittedHazeMap(picture.view(), kAir);
    double error = 0;
    for (int y = 0; y < kSize.height; ++y)
        for (int x = 0; x < kSize.width; ++x)
            error += std::abs(depthAt(picture, map, kAir, x, y) - (1 - transmissionAt(y)));
    // Everything that follows the method lands well below a tenth on average; a wrong sign, a
    // missing normalisation or a lost cap does not.
    EXPECT_LT(error / (kSize.width * kSize.height), 0.06);
}

TEST(HazeModel, SeesNoHazeWhereDarkPixelsAreEverywhere) {
    const Raster clear = rasterOf(kSize, false, [](int x, int y) {
        const auto scene = sceneAt(x, y);
        return test::Pixel{float(scene[0]), float(scene[1]), float(scene[2]), 1};
    });
    const Raster map = fittedHazeMap(clear.view(), {0.5, 0.3, 0.35});
    for (int y = 0; y < kSize.height; y += 7)
        for (int x = 0; x < kSize.width; x += 7)
            ASSERT_LT(depthAt(clear, map, {0.5, 0.3, 0.35}, x, y), 0.1) << x << ", " << y;
}

TEST(HazeModel, NormalisesTheAirlight) {
    const double nan = std::nan("");
    const auto air = normalisedAirlight({0.25, 0.5, nan});
    ASSERT_TRUE(air);
    EXPECT_EQ((*air)[0], 0.5);
    EXPECT_EQ((*air)[1], 1);
    EXPECT_FALSE(normalisedAirlight({0, -1, nan}));
    EXPECT_FALSE(normalisedAirlight({nan, nan, nan}));
}

TEST(HazeModel, OddPicturesHaveADefinedModelOrNone) {
    EXPECT_FALSE(measuredAirlight(Raster({0, 0, 0, 0}, false).view()));
    const auto flat = [](PixelSize size, float value) {
        return rasterOf(size, false, [=](int, int) { return test::Pixel{value, value, value, 1}; });
    };
    EXPECT_FALSE(measuredAirlight(flat({20, 20}, 0).view()));
    EXPECT_FALSE(measuredAirlight(flat({20, 20}, -1).view()));
    for (const PixelSize size : {PixelSize{1, 1}, PixelSize{1, 512}, PixelSize{512, 1}}) {
        const Raster picture = flat(size, 0.7f);
        const auto air = measuredAirlight(picture.view());
        ASSERT_TRUE(air);
        EXPECT_NEAR((*air)[0], 0.7, 1e-6);
        const Raster map = fittedHazeMap(picture.view(), *air);
        EXPECT_NEAR(depthAt(picture, map, *air, 0, 0), 1, 1e-6); // nothing but haze
    }
}

TEST(ScalarField, WindowsRepeatTheEdges) {
    ScalarField line({5, 1});
    line.values() = {1, 2, 6, 4, 10};
    EXPECT_EQ(windowMinimum(line, 1).values(), (std::vector<double>{1, 1, 2, 4, 4}));
    EXPECT_EQ(windowMaximum(line, 2).values(), (std::vector<double>{6, 6, 10, 10, 10}));
    const auto mean = windowMean(line, 1).values();
    const double expected[] = {4.0 / 3, 3, 4, 20.0 / 3, 8};
    for (std::size_t i = 0; i < 5; ++i)
        EXPECT_NEAR(mean[i], expected[i], 1e-12);
    // In both directions: a single 9 in a 3 × 3 plane is 1 everywhere.
    ScalarField plane({3, 3});
    plane[4] = 9;
    const ScalarField spread = windowMean(plane, 1);
    for (const double value : spread.values())
        EXPECT_NEAR(value, 1, 1e-12);
}

} // namespace
} // namespace kelvaro
