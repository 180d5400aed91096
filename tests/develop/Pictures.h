// Small pictures made by code, and looks into graphs and pixels, for the tests of the pipeline.
#pragma once

#include "platform/ImageNode.h"
#include "platform/Renderer.h"

#include <array>
#include <functional>
#include <string>
#include <vector>

namespace kelvaro::test {

using Pixel = std::array<float, 4>; // premultiplied

// Calls colour(x, y) for every pixel; y counts upwards from the bottom row.
Raster rasterOf(PixelSize size, bool hasAlpha, const std::function<Pixel(int, int)>& colour);
Image imageOf(PixelSize size, const std::function<Pixel(int, int)>& colour);
Pixel pixelAt(const Raster& raster, int x, int y);

// A picture with everything that tone and colour stages tell apart: ramps from black to beyond
// white, hard edges, saturated and out-of-gamut colours, fine texture. Scene-linear pictures
// reach 12.
Image testPicture(PixelSize size, float brightest);
// The same from a seed, values spread in stops.
Image noisePicture(PixelSize size, unsigned seed);

// The operations along the first inputs, from the source to the image.
std::vector<std::string> operationsOf(const Image& image);
// Uniforms of the last kernel of that name along the first inputs; fails the test when there is
// none.
std::vector<double> uniformsOf(const Image& image, const std::string& kernel);

Raster drawn(Renderer& renderer, const Image& image);

struct Difference {
    double worst = 0; // relative to max(1, |expected|)
    std::string where;
};
Difference worstDifference(const Raster& actual, const Raster& expected);

} // namespace kelvaro::test
