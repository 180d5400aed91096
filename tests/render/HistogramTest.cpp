#include "render/Histogram.h"

#include <gtest/gtest.h>

namespace kelvaro {
namespace {

Bitmap row(const std::vector<std::array<int, 3>>& pixels, int channels = 3) {
    Bitmap bitmap({int(pixels.size()), 1}, channels, SampleType::u8);
    std::fill_n(bitmap.row<std::uint8_t>(0), bitmap.bytes(), std::uint8_t(77));
    for (std::size_t i = 0; i < pixels.size(); ++i)
        for (std::size_t c = 0; c < 3; ++c)
            bitmap.row<std::uint8_t>(0)[i * std::size_t(channels) + c] = std::uint8_t(pixels[i][c]);
    return bitmap;
}

TEST(Histogram, CountsByHand) {
    for (const int channels : {3, 4}) {
        const auto h =
            histogramOf(row({{255, 0, 0}, {0, 0, 0}, {128, 128, 128}, {10, 20, 30}}, channels),
                        Pipeline::OutputSpace::sRGB);
        EXPECT_EQ(h.pixels, 4u);
        EXPECT_EQ(h.red[255], 1u);
        EXPECT_EQ(h.red[0], 1u);
        EXPECT_EQ(h.green[0], 2u);
        EXPECT_EQ(h.blue[30], 1u);
        // Red of luminance 0.2126 shows as 127.1; (10, 20, 30) has linear luminance
        // 0.2126 · 0.003035 + 0.7152 · 0.006995 + 0.0722 · 0.012983 = 0.006586, which shows
        // as 19.3.
        for (const int bin : {0, 19, 127, 128})
            EXPECT_EQ(h.luminance[std::size_t(bin)], 1u) << bin;
        EXPECT_EQ(h.clippedHighlights, 0.25);
        EXPECT_EQ(h.clippedShadows, 0.25);
    }
}

TEST(Histogram, GreyHasOneValueEverywhere) {
    for (const auto space : Pipeline::allOutputSpaces)
        for (int value = 0; value < 256; ++value) {
            const auto h = histogramOf(row({{value, value, value}}), space);
            EXPECT_EQ(h.luminance[std::size_t(value)], 1u) << value;
        }
}

// The red of Display P3 is brighter than that of sRGB: 0.2290 shows as 131.5.
TEST(Histogram, LuminanceKnowsThePrimaries) {
    const auto h = histogramOf(row({{255, 0, 0}}), Pipeline::OutputSpace::displayP3);
    EXPECT_EQ(h.luminance[131] + h.luminance[132], 1u);
}

TEST(Histogram, OfNothing) {
    const auto h = histogramOf(row({}), Pipeline::OutputSpace::sRGB);
    EXPECT_EQ(h, Histogram());
}

} // namespace
} // namespace kelvaro
