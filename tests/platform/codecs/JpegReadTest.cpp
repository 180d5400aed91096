#include "platform/codecs/SampleFiles.h"

#include <cmath>
#include <cstring>

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

// A picture that must be turned is read from its first row to its last by one thread.
TEST(JpegRead, PartsBetweenRestartsGiveThePixelsOfOneScan) {
    constexpr PixelSize kParted{203, 411};
    struct Case {
        bool subsampled;
        int restartRows, enough;
    };
    for (const Case test : {Case{true, 1, 0}, {true, 3, 0}, {false, 5, 0}, {true, 2, 100}}) {
        SCOPED_TRACE(test.restartRows);
        JpegOptions options;
        options.subsampled = test.subsampled;
        options.restartRows = test.restartRows;
        DecodeLimits limits;
        limits.enoughSide = test.enough;
        const auto reader = makeImageReader();
        const auto parted = reader->decode(makeJpeg(kParted, options), "parted", limits);
        options.orientation = 4; // upside down
        const auto whole = reader->decode(makeJpeg(kParted, options), "whole", limits);
        ASSERT_TRUE(parted && whole && parted->pixels.size == whole->pixels.size);
        const int bottom = whole->pixels.size.height - 1;
        for (int y = 0; y <= bottom; ++y)
            ASSERT_EQ(std::memcmp(parted->pixels.row<std::byte>(y),
                                  whole->pixels.row<std::byte>(bottom - y),
                                  parted->pixels.rowBytes()),
                      0)
                << y;
    }
}

TEST(JpegRead, DamageBetweenRestartsIsMetAsInOneScan) {
    constexpr PixelSize kParted{203, 411};
    JpegOptions options;
    options.restartRows = 4;
    const Bytes sound = makeJpeg(kParted, options);
    const auto markers = [&](int which) {
        std::size_t at = 0;
        for (std::size_t i = 0; i + 1 < sound.size(); ++i)
            if (sound[i] == std::byte(0xFF) && sound[i + 1] == std::byte(0xD0 + which)) at = i;
        return at;
    };
    const auto changed = [&](std::size_t at, int value) {
        Bytes file = sound;
        file[at] = std::byte(value);
        return file;
    };
    Bytes missing = sound;
    missing.erase(missing.begin() + std::ptrdiff_t(markers(2)),
                  missing.begin() + std::ptrdiff_t(markers(3)));
    Bytes cut = sound;
    cut.resize(markers(5));
    for (const Bytes& file :
         {changed(markers(1) + 1, 0xD6), changed(markers(3) + 30, 0xFF), missing, cut}) {
        const auto read = makeImageReader()->decode(file, "damaged", {});
        // What can be shown is shown whole; what breaks off is told.
        if (read) {
            EXPECT_EQ(read->pixels.size, kParted);
        } else {
            EXPECT_EQ(read.error().kind, FailureKind::malformed);
        }
    }
    EXPECT_FALSE(makeImageReader()->decode(cut, "cut", {}));
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
