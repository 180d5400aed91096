#include "develop/Pictures.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <sstream>

namespace kelvaro::test {

Raster rasterOf(PixelSize size, bool hasAlpha, const std::function<Pixel(int, int)>& colour) {
    Raster raster({0, 0, size.width, size.height}, hasAlpha);
    for (int y = 0; y < size.height; ++y)
        for (int x = 0; x < size.width; ++x) {
            const Pixel pixel = colour(x, y);
            for (int plane = 0; plane < (hasAlpha ? 4 : 3); ++plane)
                raster.row(plane, size.height - 1 - y)[x] = pixel[std::size_t(plane)];
        }
    return raster;
}

Image imageOf(PixelSize size, const std::function<Pixel(int, int)>& colour) {
    return imageFrom(rasterOf(size, false, colour));
}

Pixel pixelAt(const Raster& raster, int x, int y) {
    const PixelRect& extent = raster.extent();
    const int row = extent.top() - 1 - y, column = x - extent.x;
    Pixel pixel{0, 0, 0, 1};
    for (int plane = 0; plane < (raster.hasAlpha() ? 4 : 3); ++plane)
        pixel[std::size_t(plane)] = raster.row(plane, row)[column];
    return pixel;
}

Image testPicture(PixelSize size, float brightest) {
    return imageOf(size, [&](int x, int y) -> Pixel {
        const float u = (float(x) + 0.5f) / float(size.width);
        const float v = (float(y) + 0.5f) / float(size.height);
        const float ramp = brightest * u * u * u;
        const float texture = (x * 7 + y * 13) % 5 == 0 ? 0.8f : 1.0f;
        if (v < 0.25f) return {ramp, ramp, ramp, 1};
        if (v < 0.5f) return {ramp * texture, 0.4f * ramp, 0.1f * ramp * texture, 1};
        if (v < 0.75f) return {0.02f, 0.3f * texture, ramp, 1};
        return u < 0.5f ? Pixel{-0.05f, 0.6f, 0.05f, 1} : Pixel{0.7f * texture, 0.5f, 0.45f, 1};
    });
}

Image noisePicture(PixelSize size, unsigned seed) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<float> stops(-9, 1);
    return imageOf(size, [&](int, int) -> Pixel {
        const float r = std::exp2(stops(random)), g = std::exp2(stops(random));
        return {r, g, std::exp2(stops(random)), 1};
    });
}

std::vector<std::string> operationsOf(const Image& image) {
    std::vector<std::string> names;
    for (const ImageNode* node = &image.node(); node;
         node = node->inputs.empty() ? nullptr : &node->inputs.front().node())
        names.emplace_back(operationName(*node));
    std::reverse(names.begin(), names.end());
    return names;
}

std::vector<double> uniformsOf(const Image& image, const std::string& kernel) {
    for (const ImageNode* node = &image.node(); node;
         node = node->inputs.empty() ? nullptr : &node->inputs.front().node())
        if (const auto* operation = std::get_if<KernelOperation>(&node->operation);
            operation && kernel == operation->kernel->name)
            return operation->uniforms;
    ADD_FAILURE() << "no kernel " << kernel << " in the graph";
    return std::vector<double>(kMaximumKernelUniforms);
}

Raster drawn(Renderer& renderer, const Image& image) {
    auto raster = renderer.renderRaster(image, image.extent());
    if (!raster) {
        ADD_FAILURE() << raster.error().message;
        return Raster(image.extent(), image.hasAlpha());
    }
    return std::move(*raster);
}

Difference worstDifference(const Raster& actual, const Raster& expected) {
    Difference difference;
    EXPECT_EQ(actual.extent(), expected.extent());
    EXPECT_EQ(actual.hasAlpha(), expected.hasAlpha());
    const PixelRect& extent = expected.extent();
    for (int y = extent.y; y < extent.top(); ++y)
        for (int x = extent.x; x < extent.right(); ++x) {
            const Pixel a = pixelAt(actual, x, y), e = pixelAt(expected, x, y);
            for (std::size_t i = 0; i < 4; ++i) {
                const double scale = std::max(1.0, double(std::abs(e[i])));
                const double error = std::abs(double(a[i]) - double(e[i])) / scale;
                if (error <= difference.worst) continue; // false for NaN
                difference.worst = std::isnan(error) ? 1e9 : error;
                std::ostringstream text;
                text << "pixel " << x << ", " << y << " channel " << i << ": " << a[i]
                     << " instead of " << e[i];
                difference.where = text.str();
            }
        }
    return difference;
}

} // namespace kelvaro::test
