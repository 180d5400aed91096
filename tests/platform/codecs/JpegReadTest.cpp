#include "platform/codecs/SampleFiles.h"

#include <cmath>

namespace kelvaro::test {
namespace {

using Colour = JpegOptions::Colour;
constexpr PixelSize kSize{45, 30};
constexpr double kLoss = 0.04; // of quality 95, CMYK's product of two samples included

TEST(JpegRead, EveryOrientationComesOutUpright) {
    for (const bool large : {false, true}) // large pictures are turned in several bands
        for (int orientation = 1; orientation <= 8; ++orientation) {
            JpegOptions options;
            options.orientation = orientation;
            const PixelSize stored = large ? PixelSize{150, 200} : kSize;
            const auto picture = decoded(makeJpeg(stored, options), "orientation");
            const bool turned = orientation >= 5;
            ASSERT_EQ(picture.pixels.size,
                      (turned ? PixelSize{stored.height, stored.width} : stored));
            const auto worst = worstDifference(picture.pixels, [&](int x, int y, int c) {
                const auto [sx, sy] = storedPosition(stored, orientation, x, y);
                return patternAt(stored, sx, sy, c);
            });
            EXPECT_LT(worst, kLoss) << "orientation " << orientation;
        }
}

TEST(JpegRead, ReducedWhereLessIsEnough) {
    constexpr PixelSize kStored{320, 200};
    struct Case {
        int enough, reduction;
    };
    for (const Case test : {Case{0, 1}, {161, 1}, {160, 2}, {81, 2}, {80, 4}, {40, 8}, {1, 8}})
        for (const bool progressive : {false, true}) {
            SCOPED_TRACE(test.enough);
            JpegOptions options;
            options.progressive = progressive;
            options.orientation = 6; // a quarter turn to the right
            DecodeLimits limits;
            limits.enoughSide = test.enough;
            const Bytes file = makeJpeg(kStored, options);
            const auto picture = makeImageReader()->decode(file, "reduced", limits);
            ASSERT_TRUE(picture);
            EXPECT_EQ(picture->fullSize, (PixelSize{200, 320}));
            const int k = test.reduction;
            ASSERT_EQ(picture->pixels.size, (PixelSize{200 / k, 320 / k}));
            // Each pixel is the mean of a block.
            const auto worst = worstDifference(picture->pixels, [&](int x, int y, int c) {
                double sum = 0;
                for (int i = 0; i < k * k; ++i) {
                    const auto [sx, sy] = storedPosition(kStored, 6, x * k + i % k, y * k + i / k);
                    sum += patternAt(kStored, sx, sy, c);
                }
                return sum / (k * k);
            });
            EXPECT_LT(worst, kLoss);
        }
}

TEST(JpegRead, SenselessOrientationCountsAsUpright) {
    for (const int orientation : {9, 77, 65535}) {
        JpegOptions options;
        options.orientation = orientation;
        EXPECT_EQ(decoded(makeJpeg(kSize, options), "senseless").pixels.size, kSize);
    }
}

TEST(JpegRead, ProgressiveAndGrey) {
    for (const bool progressive : {false, true})
        for (const bool grey : {false, true}) {
            JpegOptions options;
            options.progressive = progressive;
            options.colour = grey ? Colour::grey : Colour::yCbCr;
            const auto picture = decoded(makeJpeg(kSize, options), "progressive");
            EXPECT_EQ(picture.pixels.type, SampleType::u8);
            EXPECT_EQ(picture.profileName, "sRGB");
            EXPECT_LT(worstDifference(picture.pixels,
                                      [&](int x, int y, int c) {
                                          return patternAt(kSize, x, y, grey ? 0 : c);
                                      }),
                      kLoss);
        }
}

TEST(JpegRead, InksWithAndWithoutAdobesInversion) {
    for (const auto colour : {Colour::cmyk, Colour::ycck})
        for (const bool inverted : {false, true}) {
            if (colour == Colour::ycck && !inverted)
                continue; // without the marker it reads as CMYK
            JpegOptions options;
            options.colour = colour;
            options.adobeInverted = inverted;
            const auto picture = decoded(makeJpeg(kSize, options), "inks");
            ASSERT_EQ(picture.pixels.channels, 3);
            EXPECT_LT(worstDifference(picture.pixels,
                                      [&](int x, int y, int c) {
                                          return (1 - patternAt(kSize, x, y, c)) *
                                                 (1 - patternAt(kSize, x, y, 3));
                                      }),
                      kLoss)
                << int(colour) << inverted;
        }
}

TEST(JpegRead, MissingEndMarkerIsNoLossButMissingPixelsAre) {
    for (const bool progressive : {false, true}) {
        JpegOptions options;
        options.progressive = progressive;
        Bytes file = makeJpeg({200, 160}, options);
        file.resize(file.size() - 2);
        EXPECT_TRUE(makeImageReader()->decode(file, "no end"));
        file.resize(file.size() * 3 / 4);
        const auto cut = makeImageReader()->decode(file, "cut.jpg");
        ASSERT_FALSE(cut);
        EXPECT_EQ(cut.error().kind, FailureKind::malformed);
        EXPECT_NE(cut.error().message.find("cut.jpg"), std::string::npos);
    }
}

} // namespace
} // namespace kelvaro::test
