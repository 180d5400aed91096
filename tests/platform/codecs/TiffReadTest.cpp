#include "platform/codecs/SampleFiles.h"

#include <cmath>
#include <tiffio.h>

namespace kelvaro::test {
namespace {

constexpr PixelSize kSize{53, 34};

TiffOptions with(std::function<void(TiffOptions&)> change) {
    TiffOptions options;
    change(options);
    return options;
}

double patternOf(int x, int y, int c) {
    return patternAt(kSize, x, y, c);
}

TEST(TiffRead, EveryLayoutShowsTheSamePicture) {
    const struct {
        const char* name;
        TiffOptions options;
        double tolerance;
    } cases[] = {
        {"8 bit", {}, 0.002},
        {"16 bit", with([](auto& o) { o.bits = 16; }), 1e-5},
        {"32 bit whole", with([](auto& o) { o.bits = 32; }), 2e-5},
        {"12 bit", with([](auto& o) { o.bits = 12; }), 2e-4},
        {"4 bit", with([](auto& o) { o.bits = 4; }), 0.034},
        {"float", with([](auto& o) { o.bits = 32, o.format = SAMPLEFORMAT_IEEEFP; }), 1e-6},
        {"double", with([](auto& o) { o.bits = 64, o.format = SAMPLEFORMAT_IEEEFP; }), 1e-6},
        {"LZW", with([](auto& o) { o.compression = COMPRESSION_LZW, o.predictor = 2; }), 0.002},
        {"PackBits", with([](auto& o) { o.compression = COMPRESSION_PACKBITS; }), 0.002},
        {"deflate float predictor", with([](auto& o) {
             o.compression = COMPRESSION_ADOBE_DEFLATE, o.predictor = 3;
             o.bits = 32, o.format = SAMPLEFORMAT_IEEEFP;
         }),
         1e-6},
        {"JPEG", with([](auto& o) { o.compression = COMPRESSION_JPEG; }), 0.06},
        {"JPEG YCbCr",
         with([](auto& o) { o.compression = COMPRESSION_JPEG, o.photometric = PHOTOMETRIC_YCBCR; }),
         0.06},
        {"planar", with([](auto& o) { o.planar = 2; }), 0.002},
        {"planar LZW 16",
         with([](auto& o) { o.planar = 2, o.bits = 16, o.compression = COMPRESSION_LZW; }), 1e-5},
        {"tiles", with([](auto& o) { o.tile = 16; }), 0.002},
        {"planar tiles deflate", with([](auto& o) {
             o.tile = 32, o.planar = 2, o.compression = COMPRESSION_ADOBE_DEFLATE;
         }),
         0.002},
        {"big-endian 16", with([](auto& o) { o.mode = "wb", o.bits = 16; }), 1e-5},
        {"big-endian float tiles", with([](auto& o) {
             o.mode = "wb", o.bits = 32, o.format = SAMPLEFORMAT_IEEEFP, o.tile = 16;
         }),
         1e-6},
        {"BigTIFF", with([](auto& o) { o.mode = "w8"; }), 0.002},
        {"reduced picture first", with([](auto& o) { o.reducedFirst = true; }), 0.002},
        {"straight alpha",
         with([](auto& o) { o.samples = 4, o.extraSample = EXTRASAMPLE_UNASSALPHA; }), 0.002},
        {"planar alpha 16", with([](auto& o) {
             o.samples = 4, o.extraSample = EXTRASAMPLE_UNASSALPHA, o.planar = 2, o.bits = 16;
         }),
         1e-5},
        {"unknown extra sample",
         with([](auto& o) { o.samples = 4, o.extraSample = EXTRASAMPLE_UNSPECIFIED; }), 0.002},
    };
    for (const auto& c : cases) {
        const auto picture = decoded(makeTiff(kSize, c.options), c.name);
        ASSERT_EQ(picture.pixels.size, kSize) << c.name;
        const bool hasAlpha = c.options.extraSample == EXTRASAMPLE_UNASSALPHA;
        EXPECT_EQ(picture.pixels.channels, hasAlpha ? 4 : 3) << c.name;
        EXPECT_EQ(picture.fileBitsPerSample, c.options.bits) << c.name;
        EXPECT_LE(worstDifference(picture.pixels, patternOf), c.tolerance) << c.name;
        const bool isFloat = c.options.format == SAMPLEFORMAT_IEEEFP;
        EXPECT_EQ(picture.profileName, isFloat ? "Linear Rec. 709" : "sRGB") << c.name;
    }
}

TEST(TiffRead, GreyOfEveryDepthAndBothDirections) {
    for (const int bits : {1, 2, 4, 8, 12, 16})
        for (const int photometric : {PHOTOMETRIC_MINISBLACK, PHOTOMETRIC_MINISWHITE}) {
            TiffOptions options;
            options.samples = 1, options.bits = bits, options.photometric = photometric;
            const auto picture = decoded(makeTiff(kSize, options), "grey");
            const double levels = std::exp2(bits) - 1;
            EXPECT_LE(worstDifference(picture.pixels,
                                      [&](int x, int y, int) {
                                          const double v =
                                              std::round(patternOf(x, y, 0) * levels) / levels;
                                          return photometric == PHOTOMETRIC_MINISWHITE ? 1 - v : v;
                                      }),
                      1e-4)
                << bits;
        }
}

TEST(TiffRead, PalettesOfEveryDepth) {
    for (const int bits : {1, 2, 4, 8}) {
        TiffOptions options;
        options.samples = 1, options.bits = bits, options.photometric = PHOTOMETRIC_PALETTE;
        const auto picture = decoded(makeTiff(kSize, options), "palette");
        const double levels = std::exp2(bits) - 1;
        EXPECT_LE(worstDifference(picture.pixels,
                                  [&](int x, int y, int c) {
                                      const double v =
                                          std::round(patternOf(x, y, 0) * levels) / levels;
                                      return c == 0 ? v : c == 1 ? 1 - v : 77 / 255.0;
                                  }),
                  1 / 255.0) // entries are cut to their upper byte
            << bits;
    }
}

TEST(TiffRead, EveryOrientationComesOutUpright) {
    for (const int tile : {0, 16})
        for (int orientation = 1; orientation <= 8; ++orientation) {
            TiffOptions options;
            options.orientation = orientation, options.bits = 16, options.tile = tile;
            const auto picture = decoded(makeTiff(kSize, options), "orientation");
            ASSERT_EQ(picture.pixels.size.width, orientation >= 5 ? kSize.height : kSize.width);
            EXPECT_LT(worstDifference(picture.pixels,
                                      [&](int x, int y, int c) {
                                          const auto [sx, sy] =
                                              storedPosition(kSize, orientation, x, y);
                                          return patternOf(sx, sy, c);
                                      }),
                      1e-5)
                << orientation;
        }
}

// Alpha is at least one quarter: half a step of the stored colour becomes two, that of alpha up
// to 1.8.
TEST(TiffRead, PremultipliedAlphaComesOutStraight) {
    for (const int bits : {8, 16, 32}) {
        TiffOptions options;
        options.samples = 4, options.bits = bits, options.extraSample = EXTRASAMPLE_ASSOCALPHA;
        if (bits == 32) options.format = SAMPLEFORMAT_IEEEFP;
        options.value = [](int x, int y, int s) {
            const double alpha = x == 0 ? 0 : patternOf(x, y, 3);
            return s == 3 ? alpha : alpha * patternOf(x, y, s);
        };
        const auto picture = decoded(makeTiff(kSize, options), "premultiplied");
        EXPECT_LE(worstDifference(picture.pixels,
                                  [&](int x, int y, int c) {
                                      if (x == 0) return 0.0; // nothing shows where nothing covers
                                      return patternOf(x, y, c);
                                  }),
                  bits == 8 ? 0.0155 : 6e-5)
            << bits;
    }
}

// Halves by IEEE 754: 1, -2, the smallest subnormal, 65504, infinity and not-a-number.
TEST(TiffRead, HalfFloatsAndValuesThatAreNotFinite) {
    const std::uint16_t halves[] = {0x3C00, 0xC000, 0x0001, 0x7BFF, 0x7C00, 0x7E00};
    const double expected[] = {1, -2, std::exp2(-24), 65504, 0, 0};
    TiffOptions options;
    options.bits = 16, options.format = SAMPLEFORMAT_IEEEFP;
    options.value = [&](int x, int, int s) { return double(halves[3 * x + s]); };
    const auto picture = decoded(makeTiff({2, 1}, options), "half");
    ASSERT_EQ(picture.pixels.type, SampleType::f32);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(double(picture.pixels.row<float>(0)[i]), expected[i]) << i;
}

TEST(TiffRead, InksWithoutProfile) {
    TiffOptions options;
    options.samples = 4, options.photometric = PHOTOMETRIC_SEPARATED, options.bits = 16;
    const auto picture = decoded(makeTiff(kSize, options), "inks");
    EXPECT_LE(worstDifference(picture.pixels,
                              [&](int x, int y, int c) {
                                  return (1 - patternOf(x, y, c)) * (1 - patternOf(x, y, 3));
                              }),
              3e-5);
}

// L* 50 is the luminance ((50 + 16) / 116)^3 = 0.18419; neutral, so all channels have it. The
// second pixel is Lab of the Rec. 709 red primary by Bradford to D50: (54.29, 80.81, 69.89),
// rounded.
TEST(TiffRead, LabBecomesLinearLight) {
    const double values[2][3] = {{50, 0, 0}, {54.29, 80.81, 69.89}};
    for (const int bits : {8, 16}) {
        TiffOptions options;
        options.photometric = PHOTOMETRIC_CIELAB, options.bits = bits;
        options.value = [&](int x, int, int s) {
            if (s == 0) return values[x][0] / 100;
            const double unit = bits == 8 ? 1 : 256; // a* and b* are never negative here
            return std::round(values[x][s] * unit) / (bits == 8 ? 255 : 65535);
        };
        const auto picture = decoded(makeTiff({2, 1}, options), "lab");
        const double tolerance = bits == 8 ? 0.02 : 0.002;
        const auto grey = linearAt(picture, 0, 0), red = linearAt(picture, 1, 0);
        for (const double channel : grey)
            EXPECT_NEAR(channel, 0.18419, tolerance / 2) << bits;
        EXPECT_NEAR(red[0], 1, tolerance) << bits;
        EXPECT_NEAR(red[1], 0, tolerance) << bits;
        EXPECT_NEAR(red[2], 0, tolerance) << bits;
    }
}

} // namespace
} // namespace kelvaro::test
