// Small pictures made by code, and comparisons, for the tests of the image engine.
#pragma once

#include "platform/Image.h"
#include "platform/Renderer.h"
#include "platform/imaging/SameBits.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <random>

namespace kelvaro::test {

// value(x, y, plane) with x, y in whole pixels of image space; alpha premultiplied by the caller.
inline Raster madeRaster(PixelRect extent, bool alpha,
                         const std::function<float(int, int, int)>& value) {
    Raster raster(extent, alpha);
    for (int plane = 0; plane < (alpha ? 4 : 3); ++plane)
        for (int row = 0; row < extent.height; ++row)
            for (int column = 0; column < extent.width; ++column)
                raster.row(plane, row)[column] =
                    value(extent.x + column, extent.top() - 1 - row, plane);
    return raster;
}

inline Raster noiseRaster(PixelRect extent, bool alpha, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> range(-0.2f, 2.0f);
    return madeRaster(extent, alpha, [&](int, int, int plane) {
        return plane == 3 ? std::min(1.0f, std::abs(range(random))) : range(random);
    });
}

inline float at(const Raster& raster, int x, int y, int plane = 0) {
    return raster.row(plane, raster.extent().top() - 1 - y)[x - raster.extent().x];
}

// The largest difference of two rasters relative to max(1, |expected|).
inline double worstDifference(const Raster& actual, const Raster& expected) {
    EXPECT_EQ(actual.extent(), expected.extent());
    EXPECT_EQ(actual.hasAlpha(), expected.hasAlpha());
    double worst = 0;
    for (int plane = 0; plane < (expected.hasAlpha() ? 4 : 3); ++plane)
        for (int row = 0; row < expected.extent().height; ++row)
            for (int column = 0; column < expected.extent().width; ++column) {
                const double a = actual.row(plane, row)[column];
                const double e = expected.row(plane, row)[column];
                if (std::isnan(a) != std::isnan(e)) return INFINITY;
                const double d = std::abs(a - e) / std::max(1.0, std::abs(e));
                if (!std::isnan(d)) worst = std::max(worst, d);
            }
    return worst;
}

inline Raster rendered(Renderer& renderer, const Image& image, const PixelRect& rect) {
    auto result = renderer.renderRaster(image, rect);
    EXPECT_TRUE(result.has_value());
    return std::move(result).value();
}

} // namespace kelvaro::test
