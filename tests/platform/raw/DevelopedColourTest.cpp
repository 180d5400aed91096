#include "platform/raw/SceneFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <string>

namespace kelvaro {
namespace {

using namespace test;

TEST(DevelopedColour, WhiteBalanceComesFromTheNeutral) {
    SyntheticDng dng;
    const std::array<double, 3> neutral{0.4, 1, 0.7};
    dng.neutral = neutral;
    // A sensor with these sensitivities sees a grey card as multiples of its neutral.
    for (std::size_t i = 0; i < 9; ++i)
        dng.matrix[i] *= neutral[i / 3];
    dng.scene = [&](int, int, int channel) { return 0.18 * neutral[std::size_t(channel)]; };
    const auto path = dng.write("balance.dng");
    RawProperties properties;
    const Raster raster = developed(path, {}, &properties);
    std::filesystem::remove(path);
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(raster.row(c, 20)[30], 0.18, 5e-5);
    EXPECT_NEAR(properties.asShotTemperature, 6504, 15);
    EXPECT_EQ(properties.size, (PixelSize{64, 48}));
}

// The matrix of the camera's kind, times what this one differs by.
TEST(DevelopedColour, IndividualCalibrationIsApplied) {
    SyntheticDng dng;
    dng.scene = ramp;
    dng.crop = {12, 10, 31, 23};
    dng.calibration = {1, 0.1, 0, 0, 1, 0, 0, 0.05, 1};
    const auto whole = dng.matrix;
    for (std::size_t i = 0; i < 3; ++i) {
        dng.matrix[i] = whole[i] - 0.1 * whole[3 + i];
        dng.matrix[6 + i] = whole[6 + i] - 0.05 * whole[3 + i];
    }
    EXPECT_LT(worst(dng), kTolerance);
}

// Noise at high sensitivity leaves no blotches of colour, and what is really coloured stays.
TEST(DevelopedColour, CoarseColourNoiseIsReduced) {
    SyntheticDng dng;
    dng.width = 512, dng.height = 384;
    dng.active = {0, 0, 384, 512};
    dng.crop = {0, 0, 512, 384};
    dng.black = {1024, 1024, 1024, 1024};
    const auto isPatch = [](int row, int column) {
        return row >= 160 && row < 240 && column >= 200 && column < 300;
    };
    std::mt19937 random(4);
    std::normal_distribution<double> noise(0, 0.03);
    dng.scene = [&](int row, int column, int channel) {
        const double colour = isPatch(row, column) && channel == 0 ? 0.2 : 0.06;
        return colour + noise(random);
    };
    const auto path = dng.write("blotches.dng");
    const Raster plain = developed(path, {0, true, 1}), reduced = developed(path, {0, false, 1});
    std::filesystem::remove(path);
    constexpr int kBlock = 16;
    const auto blockMeans = [&](const Raster& raster, int row, int column) {
        double sum = 0;
        for (int y = row; y < row + kBlock; ++y) {
            for (int x = column; x < column + kBlock; ++x)
                sum += raster.row(0, y)[x] - raster.row(1, y)[x];
        }
        return sum / (kBlock * kBlock);
    };
    double before = 0, after = 0;
    for (int row = 32; row < 120; row += kBlock) {
        for (int column = 32; column < 464; column += kBlock) {
            before += std::pow(blockMeans(plain, row, column), 2);
            after += std::pow(blockMeans(reduced, row, column), 2);
        }
    }
    EXPECT_LT(std::sqrt(after), 0.4 * std::sqrt(before));
    for (int row = 176; row < 220; row += kBlock) {
        for (int column = 216; column < 280; column += kBlock)
            EXPECT_NEAR(blockMeans(reduced, row, column), 0.14, 0.03);
    }
}

TEST(DevelopedColour, KeepsValuesBelowBlackAndAboveOne) {
    SyntheticDng dng;
    dng.black = {1000, 1000, 1000, 1000};
    dng.exposureStops = 2;
    dng.scene = [](int, int column, int) { return column < 32 ? -0.01 : 0.9; };
    EXPECT_LT(worst(dng), 10); // sizes agree
    const auto path = dng.write("range.dng");
    const Raster raster = developed(path);
    std::filesystem::remove(path);
    EXPECT_NEAR(raster.row(1, 24)[10], -0.04, 5e-4);
    EXPECT_NEAR(raster.row(1, 24)[54], 3.6, 5e-3);
}

TEST(DevelopedColour, BlownAreasAreNeutral) {
    SyntheticDng dng;
    dng.neutral = {0.4, 1, 0.7};
    // Brighter from left to right: green saturates first, red (0.4 of it) last.
    for (std::size_t i = 0; i < 9; ++i)
        dng.matrix[i] *= dng.neutral[i / 3];
    dng.width = 200;
    dng.active = {0, 0, 48, 200};
    dng.crop = {0, 0, 200, 48};
    const auto scene = [](int column) { return 0.3 + 3.2 * column / 200; };
    dng.scene = [&](int, int column, int channel) {
        return std::min(1.0, scene(column) * std::array{0.4, 1.0, 0.7}[std::size_t(channel)]);
    };
    const auto path = dng.write("blown.dng");
    for (const int reduction : {1, 2}) {
        const Raster raster = developed(path, {0, true, reduction});
        float before = 0;
        for (int x = 0; x < 200 / reduction; ++x) {
            const float* rows[3] = {raster.row(0, 24 / reduction), raster.row(1, 24 / reduction),
                                    raster.row(2, 24 / reduction)};
            // A grey ramp stays grey, rises throughout, and follows the scene while red is sound.
            const double want = std::min(scene(x * reduction), 2.5);
            for (const float* row : rows) {
                EXPECT_NEAR(row[x], rows[1][x], 0.04 * want) << x;
                EXPECT_NEAR(row[x], want, 0.06 * want) << x;
            }
            EXPECT_GE(rows[1][x], before - 0.01f);
            before = rows[1][x];
        }
    }
    std::filesystem::remove(path);
}

TEST(DevelopedColour, SaturatedGreenTakesTheColourAround) {
    // A bright yellow patch, whose green is cut off, in a yellow of half its brightness.
    SyntheticDng dng;
    dng.neutral = {0.4, 1, 0.7};
    for (std::size_t i = 0; i < 9; ++i)
        dng.matrix[i] *= dng.neutral[i / 3];
    dng.scene = [](int row, int column, int channel) {
        const bool isPatch = row >= 16 && row < 32 && column >= 24 && column < 40;
        const double light = isPatch ? 1.4 : 0.7;
        return std::min(1.0, light * std::array{0.4 * 1.2, 1.0, 0.7 * 0.2}[std::size_t(channel)]);
    };
    const auto path = dng.write("yellow.dng");
    const Raster raster = developed(path, {0, true, 1});
    std::filesystem::remove(path);
    EXPECT_NEAR(raster.row(0, 24)[32], 1.4 * 1.2, 0.05);
    EXPECT_NEAR(raster.row(1, 24)[32], 1.4, 0.15);
    EXPECT_NEAR(raster.row(2, 24)[32], 1.4 * 0.2, 0.05);
}

// Greens that see more in one kind of row would show as a maze on even surfaces.
TEST(DevelopedColour, UnequalGreensAreBroughtTogether) {
    for (const char* pattern : {"RGGB", "GRBG", "BGGR", "GBRG"}) {
        SyntheticDng dng;
        dng.width = 200, dng.height = 160;
        dng.active = {0, 0, 160, 200};
        dng.crop = {0, 0, 200, 160};
        dng.pattern = pattern;
        const bool hasRedFirst = std::string(pattern).substr(0, 2).find('R') != std::string::npos;
        dng.scene = [&](int row, int column, int channel) {
            const double even = 0.2 + 0.001 * column;
            const bool isRedRow = (row % 2 == 0) == hasRedFirst;
            return channel != 1 ? even : even * (isRedRow ? 1.03 : 0.97);
        };
        const auto path = dng.write("greens.dng");
        const Raster raster = developed(path, {0, true, 1});
        for (int y = 20; y < 140; ++y) {
            for (int x = 20; x < 180; ++x)
                ASSERT_NEAR(raster.row(1, y)[x], 0.2 + 0.001 * x, 0.0012) << pattern;
        }
        std::filesystem::remove(path);
    }
}

} // namespace
} // namespace kelvaro
