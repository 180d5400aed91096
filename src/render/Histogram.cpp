#include "render/Histogram.h"

#include "base/Require.h"

#include <cmath>
#include <vector>

namespace kelvaro {

namespace {

double decoded(double v) {
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

// Weighted sums in 1/2^24, and the display value of each, found by its upper 16 bits: two values of
// the curve never share one, even in the darks.
struct Tables {
    static constexpr double unit = 1 << 24;
    std::array<std::array<std::uint32_t, 256>, 3> weighted{};
    std::vector<std::uint8_t> display = std::vector<std::uint8_t>(65537);

    explicit Tables(const std::array<double, 3>& weights) {
        for (int value = 0; value < 256; ++value)
            for (std::size_t c = 0; c < 3; ++c)
                weighted[c][std::size_t(value)] =
                    std::uint32_t(std::lround(decoded(value / 255.0) * weights[c] * unit));
        int value = 0;
        for (std::size_t i = 0; i < display.size(); ++i) {
            while (value < 255 && double(i) / 65536 >= decoded((value + 0.5) / 255))
                ++value;
            display[i] = std::uint8_t(value);
        }
    }
};

const Tables& tablesOf(Pipeline::OutputSpace space) {
    static const Tables sRGB({0.2126, 0.7152, 0.0722});
    static const Tables displayP3({0.228975, 0.691739, 0.079287});
    return space == Pipeline::OutputSpace::sRGB ? sRGB : displayP3;
}

} // namespace

Histogram histogramOf(const Bitmap& pixels, Pipeline::OutputSpace space, int rowStep) {
    KELVARO_REQUIRE(rowStep > 0 && pixels.type == SampleType::u8 && pixels.channels >= 3);
    const Tables& tables = tablesOf(space);
    Histogram histogram;
    std::uint64_t high = 0, low = 0;
    for (int y = 0; y < pixels.size.height; y += rowStep) {
        const auto* pixel = pixels.row<std::uint8_t>(y);
        for (int x = 0; x < pixels.size.width; ++x, pixel += pixels.channels) {
            const std::uint8_t r = pixel[0], g = pixel[1], b = pixel[2];
            ++histogram.red[r];
            ++histogram.green[g];
            ++histogram.blue[b];
            const std::uint32_t sum =
                tables.weighted[0][r] + tables.weighted[1][g] + tables.weighted[2][b];
            ++histogram.luminance[tables.display[(sum + 128) >> 8]];
            high += r == 255 || g == 255 || b == 255;
            low += (r | g | b) == 0;
        }
        histogram.pixels += std::uint64_t(pixels.size.width);
    }
    if (histogram.pixels > 0) {
        histogram.clippedHighlights = double(high) / double(histogram.pixels);
        histogram.clippedShadows = double(low) / double(histogram.pixels);
    }
    return histogram;
}

} // namespace kelvaro
