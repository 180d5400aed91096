#include "platform/raw/SceneFile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace kelvaro {
namespace {

using namespace test;

TEST(Development, EveryPhaseShiftAndOrientationShowsTheScene) {
    for (const char* pattern : {"RGGB", "BGGR", "GRBG", "GBRG"}) {
        for (int shift = 0; shift < 4; ++shift) {
            SyntheticDng dng;
            dng.scene = ramp;
            dng.pattern = pattern;
            dng.width = 71;
            dng.height = 59;
            const int top = 3 + shift / 2, left = 4 + shift % 2;
            dng.active = {top, left, top + 49, left + 57};
            dng.crop = {12 - shift % 2, 12 - shift / 2, 31, 23}; // odd sizes, away from the border
            dng.black = {200, 260, 250, 230};
            dng.orientation = 1 + 2 * shift + (pattern[0] == 'B' ? 1 : 0);
            EXPECT_LT(worst(dng), kTolerance) << pattern << " shifted by " << shift;
            EXPECT_LT(worst(dng, 2), kTolerance)
                << pattern << " at half size, shifted by " << shift;
            dng.crop = {0, 0, 57, 49};
            EXPECT_LT(worst(dng), kBorderTolerance) << pattern << " up to the border";
        }
    }
}

TEST(Development, LinearDngNeedsNoDemosaic) {
    SyntheticDng dng;
    dng.scene = ramp;
    dng.pattern = "";
    dng.crop = {5, 3, 51, 41};
    dng.orientation = 7;
    dng.exposureStops = 1.5;
    EXPECT_LT(worst(dng), 2e-4);
    EXPECT_LT(worst(dng, 2), 2e-4);
}

TEST(Development, FlatFieldsAreExactAtBothSizes) {
    for (const int reduction : {1, 2}) {
        SyntheticDng dng;
        dng.scene = [](int, int, int channel) {
            return std::array{0.25, 0.5, 0.125}[std::size_t(channel)];
        };
        dng.exposureStops = -1;
        for (int row = 0; row < 48; ++row)
            dng.rowDeltas.push_back(row % 5 * 10 - 20);
        for (int column = 0; column < 64; ++column)
            dng.columnDeltas.push_back(column % 7 * 6 - 18);
        dng.black = {300, 310, 320, 330};
        EXPECT_LT(worst(dng, reduction), 5e-5) << reduction;
    }
}

// Stored as square roots, as some cameras do to save bits.
TEST(Development, LinearisationTablesAreApplied) {
    SyntheticDng dng;
    dng.scene = ramp;
    for (int i = 0; i < 1024; ++i)
        dng.linearisation.push_back(int(16383.0 * i * i / (1023.0 * 1023.0) + 0.5));
    dng.crop = {12, 10, 31, 23};
    // A step of the root at full scale is 32 of 16383.
    EXPECT_LT(worst(dng), kTolerance + 0.002);
}

TEST(Development, PixelsThatAreNotSquareAreStretched) {
    for (const auto& [across, down] : {std::pair{1.0, 2.0}, {2.0, 1.0}, {0.5, 1.0}}) {
        SyntheticDng dng;
        dng.scene = ramp;
        dng.scale = {across, down};
        dng.orientation = across > 1 ? 6 : 1;
        const bool isWide = across > down;
        const auto path = dng.write("aspect.dng");
        for (const int reduction : {1, 2}) {
            RawProperties properties;
            const Raster raster = developed(path, {0, true, reduction}, &properties);
            const PixelSize stored{64 * (isWide ? 2 : 1), 48 * (isWide ? 1 : 2)};
            const bool swaps = dng.orientation == 6;
            EXPECT_EQ(properties.size, (swaps ? PixelSize{stored.height, stored.width} : stored));
            ASSERT_EQ(raster.extent().size(), (PixelSize{properties.size.width / reduction,
                                                         properties.size.height / reduction}));
            for (int row = 20 / reduction; row < 70 / reduction; row += 3) {
                for (int column = 20 / reduction; column < 40 / reduction; column += 3) {
                    // Place in photosites, from the middle of the stretched pixel.
                    const double r = (row + 0.5) * reduction / (isWide ? 1 : 2) - 0.5,
                                 c = (column + 0.5) * reduction / (isWide ? 2 : 1) - 0.5;
                    if (r > 40) continue;
                    const Place at = upright(dng.orientation, row, column, stored.width / reduction,
                                             stored.height / reduction);
                    const double want[3] = {0.1 + 0.5 * c / 100,
                                            0.15 + 0.3 * r / 100 + 0.1 * c / 100,
                                            0.5 - 0.4 * r / 100};
                    for (int i = 0; i < 3; ++i) {
                        EXPECT_NEAR(raster.row(i, at.row)[at.column], want[i], 0.006)
                            << across << ' ' << row << ' ' << column;
                    }
                }
            }
        }
        std::filesystem::remove(path);
    }
}

// The large pattern at every place of its corner, at odd sizes, up to the border.
TEST(Development, SixBySixPatternsShowTheSceneAtAnyCrop) {
    for (int shift = 0; shift < 6; ++shift) {
        SyntheticDng dng;
        dng.scene = [](int row, int column, int channel) {
            return 0.5 * ramp(row, column, channel) + 0.1;
        };
        dng.pattern = "GGRGGBGGBGGRBRGRBGGGBGGRGGRGGBRBGBRG";
        dng.width = 90, dng.height = 74;
        dng.active = {3 + shift, 2 * shift, 67 + shift, 71 + 2 * shift};
        dng.crop = {shift % 3, shift % 2, 71 - shift, 64 - shift};
        for (const int reduction : {1, 2})
            EXPECT_LT(worst(dng, reduction), 0.02) << shift << ' ' << reduction;
    }
}

// Fine texture: pixels at the edges must be as good as those inside.
TEST(Development, BordersAreAsGoodAsTheInside) {
    for (const char* pattern : {"RGGB", "GBRG", "GGRGGBGGBGGRBRGRBGGGBGGRGGRGGBRBGBRG"}) {
        SyntheticDng dng;
        dng.pattern = pattern;
        dng.width = 173, dng.height = 141;
        dng.active = {0, 0, 141, 173};
        dng.crop = {0, 0, 173, 141};
        dng.scene = [](int row, int column, int channel) {
            const double light = 0.3 + 0.12 * std::sin(0.9 * column + 0.35 * row) +
                                 0.08 * std::sin(0.5 * row - 0.2 * column);
            return light * std::array{1.0, 0.9, 0.7}[std::size_t(channel)];
        };
        const auto path = dng.write("border.dng");
        const Raster raster = developed(path, {0, true, 1});
        std::filesystem::remove(path);
        double edge = 0, edges = 0, inner = 0, inners = 0;
        for (int y = 0; y < 141; ++y) {
            for (int x = 0; x < 173; ++x) {
                const bool isEdge = std::min({x, y, 172 - x, 140 - y}) < 3;
                for (int c = 0; c < 3; ++c) {
                    const double d = raster.row(c, y)[x] - dng.scene(y, x, c);
                    (isEdge ? edge : inner) += d * d;
                    (isEdge ? edges : inners) += 1;
                }
            }
        }
        const double outside = std::sqrt(edge / edges), inside = std::sqrt(inner / inners);
        std::printf("%s: error %.5f at the border, %.5f inside\n", pattern, outside, inside);
        EXPECT_LT(outside, 2 * inside + 0.004) << pattern;
    }
}

} // namespace
} // namespace kelvaro
