// Finished pixels: transfer curve, rounding, alpha, primaries, cancellation, sources.
#include "platform/imaging/Pictures.h"
#include "platform/imaging/ReferenceRenderer.h"
#include "platform/imaging/RowEncoding.h"
#include "platform/imaging/TiledRenderer.h"

namespace kelvaro {
namespace {

using namespace test;

double srgb(double x) {
    x = std::clamp(x, 0.0, 1.0);
    return x <= 0.0031308 ? 12.92 * x : 1.055 * std::pow(x, 1 / 2.4) - 0.055;
}

// A ramp from -0.2 to 1.2 with the special values in front, as one row of grey.
Raster ramp(int count) {
    return madeRaster({0, 0, count, 1}, false, [&](int x, int, int) {
        const float special[] = {NAN, INFINITY, -INFINITY, 0, -0.0f, 1, 1e-40f, 0.0031308f};
        if (x < 8) return special[x];
        return -0.2f + 1.4f * float(x) / float(count);
    });
}

TEST(Renderer, RoundsTheTransferCurveHalfUp) {
    const int count = 5003;
    const Raster values = ramp(count);
    const Image image = imageFrom(values.clone());
    const auto renderer = makeTiledRenderer(2);
    for (const auto curve : {TransferCurve::sRGB, TransferCurve::linear}) {
        BitmapFormat format{SampleType::u8, curve};
        const Bitmap bytes = renderer->renderBitmap(image, image.extent(), format).value();
        format.type = SampleType::u16;
        const Bitmap words = renderer->renderBitmap(image, image.extent(), format).value();
        for (int x = 0; x < count; ++x) {
            const double v = at(values, x, 0);
            const double clipped = std::isnan(v) ? 0 : std::clamp(v, 0.0, 1.0);
            const double shown = curve == TransferCurve::sRGB ? srgb(clipped) : clipped;
            // The polynomial's 6e-7 may cross a rounding threshold, never more.
            EXPECT_NEAR(bytes.row<std::uint8_t>(0)[3 * x + 1], shown * 255, 0.5 + 2e-4) << v;
            EXPECT_NEAR(words.row<std::uint16_t>(0)[3 * x + 2], shown * 65535, 0.5 + 5e-2) << v;
        }
    }
}

TEST(Renderer, AgreesWithPlainOneInEveryFormat) {
    const auto fast = makeTiledRenderer(2), plain = makeReferenceRenderer();
    const Image image = imageFrom(noiseRaster({2, 3, 131, 9}, true, 3));
    const PixelRect view{0, 0, 140, 14};
    using Alpha = BitmapFormat::Alpha;
    for (const auto type : {SampleType::u8, SampleType::u16, SampleType::f32})
        for (const auto alpha : {Alpha::drop, Alpha::straight, Alpha::overWhite}) {
            BitmapFormat format{type, TransferCurve::sRGB, alpha};
            format.toTarget = {{{0.8f, 0.2f, 0}, {0.1f, 0.9f, 0}, {0, 0.1f, 0.9f}}};
            const Bitmap a = fast->renderBitmap(image, view, format).value();
            const Bitmap e = plain->renderBitmap(image, view, format).value();
            ASSERT_EQ(a.channels, e.channels);
            ASSERT_EQ(a.channels, alpha == Alpha::straight ? 4 : 3);
            for (int y = 0; y < view.height; ++y)
                for (int i = 0; i < view.width * a.channels; ++i) {
                    if (type == SampleType::u8)
                        ASSERT_NEAR(a.row<std::uint8_t>(y)[i], e.row<std::uint8_t>(y)[i], 1);
                    else if (type == SampleType::u16)
                        ASSERT_NEAR(a.row<std::uint16_t>(y)[i], e.row<std::uint16_t>(y)[i], 1);
                    else
                        ASSERT_NEAR(a.row<float>(y)[i], e.row<float>(y)[i],
                                    1e-6 * std::max(1.0f, std::abs(e.row<float>(y)[i])));
                }
        }
}

TEST(Renderer, StopsWhenCancelled) {
    Cancellation cancellation;
    cancellation.cancel();
    const Image image = imageFrom(noiseRaster({0, 0, 50, 50}, false, 1));
    for (const auto& renderer : {makeTiledRenderer(2), makeReferenceRenderer()}) {
        EXPECT_EQ(renderer->renderRaster(image, image.extent(), &cancellation).error().kind,
                  FailureKind::cancelled);
        EXPECT_EQ(renderer->renderBitmap(image, image.extent(), {}, &cancellation).error().kind,
                  FailureKind::cancelled);
    }
}

// Every length up to several vectors: a pixel's bytes do not depend on its place in the row, and
// what stands behind the row is left alone.
TEST(Renderer, BytesOfARowStayInTheirPlace) {
    constexpr std::size_t most = 70, slack = 80;
    const Raster noise = noiseRaster({0, 0, int(most), 1}, true, 8);
    const float* const planes[4] = {noise.row(0, 0), noise.row(1, 0), noise.row(2, 0),
                                    noise.row(3, 0)};
    for (const bool withAlpha : {false, true}) {
        const std::size_t channels = withAlpha ? 4 : 3;
        BitmapFormat format{SampleType::u8, TransferCurve::sRGB};
        format.alpha = withAlpha ? BitmapFormat::Alpha::straight : BitmapFormat::Alpha::drop;
        std::vector<std::byte> whole(most * channels + slack);
        rows::encode(planes, most, format, withAlpha, whole.data());
        for (std::size_t count = 0; count <= most; ++count) {
            std::vector<std::byte> row(count * channels + slack, std::byte{0xa5});
            rows::encode(planes, count, format, withAlpha, row.data());
            const auto end = row.begin() + std::ptrdiff_t(count * channels);
            EXPECT_TRUE(std::equal(row.begin(), end, whole.begin())) << count;
            EXPECT_EQ(std::count(end, row.end(), std::byte{0xa5}), std::ptrdiff_t(slack)) << count;
        }
    }
}

// 8- and 16-bit samples pass the table of their channel, then the matrix, then the alpha is
// multiplied in. Widths that are no multiple of what is read together.
TEST(Renderer, BitmapSourcesBecomeLinearLight) {
    const auto renderer = makeTiledRenderer(1);
    constexpr int width = 603, height = 20;
    for (const auto type : {SampleType::u8, SampleType::u16})
        for (const int channels : {3, 4}) {
            const std::size_t entries = type == SampleType::u8 ? 256 : 65536;
            const auto tableOf = [&](double exponent) {
                auto table = std::make_shared<std::vector<float>>(entries);
                for (std::size_t i = 0; i < entries; ++i)
                    (*table)[i] = float(std::pow(double(i) / double(entries - 1), exponent));
                return table;
            };
            Bitmap bitmap({width, height}, channels, type);
            const auto sample = [&](int x, int y, int c) {
                return (std::size_t(x) * 31 + std::size_t(y) * 7 + std::size_t(c) * 101) % entries;
            };
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x)
                    for (int c = 0; c < channels; ++c)
                        if (type == SampleType::u8)
                            bitmap.row<std::uint8_t>(y)[channels * x + c] =
                                std::uint8_t(sample(x, y, c));
                        else
                            bitmap.row<std::uint16_t>(y)[channels * x + c] =
                                std::uint16_t(sample(x, y, c));
            ColourDecoding colour{{tableOf(1), tableOf(2), tableOf(3)},
                                  {{{1.5f, -0.5f, 0}, {0, 1, 0}, {0, 0.25f, 0.75f}}},
                                  false};
            const Image image = imageFrom(sourceFrom(std::move(bitmap), std::move(colour)));
            const Raster raster = rendered(*renderer, image, image.extent());
            for (int y = 0; y < height; ++y)
                for (int x = 0; x < width; ++x) {
                    const auto value = [&](int c) {
                        return double(sample(x, height - 1 - y, c)) / double(entries - 1);
                    };
                    const double alpha = channels == 4 ? value(3) : 1;
                    const double r = value(0), g = std::pow(value(1), 2), b = std::pow(value(2), 3);
                    ASSERT_NEAR(at(raster, x, y, 0), (1.5 * r - 0.5 * g) * alpha, 1e-6);
                    ASSERT_NEAR(at(raster, x, y, 1), g * alpha, 1e-6);
                    ASSERT_NEAR(at(raster, x, y, 2), (0.25 * g + 0.75 * b) * alpha, 1e-6);
                    if (channels == 4) {
                        ASSERT_NEAR(at(raster, x, y, 3), alpha, 1e-6);
                    }
                }
        }
}

} // namespace
} // namespace kelvaro
