#include "platform/codecs/SampleFiles.h"

#include <cmath>

namespace kelvaro::test {
namespace {

constexpr PixelSize kSize{37, 21};
enum : int { kGrey = 0, kRgb = 2, kPalette = 3, kGreyAlpha = 4, kRgba = 6 };

TEST(PngRead, EveryColourTypeDepthAndInterlacing) {
    const struct {
        int type, bits;
    } cases[] = {{kGrey, 1},    {kGrey, 2},      {kGrey, 4},       {kGrey, 8},    {kGrey, 16},
                 {kRgb, 8},     {kRgb, 16},      {kPalette, 1},    {kPalette, 2}, {kPalette, 4},
                 {kPalette, 8}, {kGreyAlpha, 8}, {kGreyAlpha, 16}, {kRgba, 8},    {kRgba, 16}};
    for (const auto& c : cases)
        for (const bool interlaced : {false, true}) {
            PngOptions options;
            options.bits = c.bits, options.colourType = c.type, options.interlaced = interlaced;
            const auto picture = decoded(makePng(kSize, options), "png");
            EXPECT_EQ(picture.fileBitsPerSample, c.bits);
            EXPECT_EQ(picture.pixels.channels, c.type == kGreyAlpha || c.type == kRgba ? 4 : 3);
            EXPECT_EQ(picture.pixels.type, c.bits == 16 ? SampleType::u16 : SampleType::u8);
            const double levels = std::exp2(c.bits) - 1;
            EXPECT_LT(worstDifference(
                          picture.pixels,
                          [&](int x, int y, int channel) {
                              const int source = channel == 3                        ? 3
                                                 : c.type == kRgb || c.type == kRgba ? channel
                                                                                     : 0;
                              const double v =
                                  std::round(patternAt(kSize, x, y, source) * levels) / levels;
                              if (c.type != kPalette) return v;
                              return channel == 0 ? v : channel == 1 ? 1 - v : 77 / 255.0;
                          }),
                      0.0051) // a palette of 256 steps is itself rounded
                << "type " << c.type << " bits " << c.bits << " interlaced " << interlaced;
        }
}

TEST(PngRead, TransparentColoursBecomeAlpha) {
    PngOptions palette;
    palette.colourType = kPalette, palette.bits = 1, palette.transparentKey = true;
    const auto byIndex = decoded(makePng(kSize, palette), "palette");
    ASSERT_EQ(byIndex.pixels.channels, 4);
    EXPECT_NEAR(sampleAt(byIndex.pixels, 0, 0, 3), 128 / 255.0,
                1e-9); // index 0: red below one half
    EXPECT_EQ(sampleAt(byIndex.pixels, kSize.width - 1, 0, 3), 1);
    PngOptions key;
    key.bits = 16, key.transparentKey = true;
    const auto byColour = decoded(makePng(kSize, key), "key");
    ASSERT_EQ(byColour.pixels.channels, 4);
    EXPECT_EQ(sampleAt(byColour.pixels, 0, 0, 3), 0);
    EXPECT_EQ(sampleAt(byColour.pixels, 1, 0, 3), 1);
}

TEST(PngRead, EveryOrientationComesOutUpright) {
    for (const int bits : {8, 16})
        for (int orientation = 1; orientation <= 8; ++orientation) {
            PngOptions options;
            options.bits = bits, options.orientation = orientation;
            options.colourType = orientation % 2 ? kRgb : kRgba;
            const auto picture = decoded(makePng(kSize, options), "png");
            ASSERT_EQ(picture.pixels.size.width, orientation >= 5 ? kSize.height : kSize.width);
            EXPECT_LT(worstDifference(picture.pixels,
                                      [&](int x, int y, int c) {
                                          const auto [sx, sy] =
                                              storedPosition(kSize, orientation, x, y);
                                          return patternAt(kSize, sx, sy, c);
                                      }),
                      0.002)
                << orientation;
        }
}

TEST(PngRead, GammaCountsOnlyAloneAndWhenSane) {
    const struct {
        double gamma;
        bool sRGBChunk;
        double expected; // linear light of one half
    } cases[] = {{0, false, sRGBToLinear(0.5)},        {1, false, 0.5},
                 {1 / 1.8, false, std::pow(0.5, 1.8)}, {0.45455, false, sRGBToLinear(0.5)},
                 {1, true, sRGBToLinear(0.5)},         {1e-4, false, sRGBToLinear(0.5)}};
    for (const auto& c : cases) {
        PngOptions options;
        options.bits = 16, options.gamma = c.gamma, options.sRGBChunk = c.sRGBChunk;
        const auto picture = decoded(makePng(kSize, options), "gamma");
        EXPECT_NEAR(double((*picture.colour.tone[0])[32768]), c.expected, 1e-4) << c.gamma;
    }
}

} // namespace
} // namespace kelvaro::test
