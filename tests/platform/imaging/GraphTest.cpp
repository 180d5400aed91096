// What the graph promises before anything is drawn: extents, identities, and hand-worked pixels.
#include "platform/ImageNode.h"
#include "platform/imaging/Pictures.h"
#include "platform/imaging/ReferenceRenderer.h"
#include "platform/imaging/TiledRenderer.h"

namespace kelvaro {
namespace {

using namespace test;

Image column(std::initializer_list<float> bottomUp) {
    const std::vector<float> values(bottomUp);
    return imageFrom(madeRaster({0, 0, 1, int(values.size())}, false,
                                [&](int, int y, int) { return values[std::size_t(y)]; }));
}

TEST(Graph, NeutralOperationsReturnTheirInput) {
    const Image image = imageFrom(noiseRaster({0, 0, 9, 5}, false, 1));
    EXPECT_EQ(exposureAdjusted(image, 0), image);
    EXPECT_EQ(temperatureAndTint(image, {5000, 3}, {5000, 3}), image);
    EXPECT_EQ(lanczosScaled(image, 1), image);
    EXPECT_EQ(lanczosResized(image, {9, 5}), image);
    EXPECT_EQ(boxBlurred(image, 0), image);
    EXPECT_EQ(cropped(image, {-1, 0, 20, 5}), image);
    EXPECT_EQ(translated(image, 0, 0), image);
    EXPECT_EQ(stretched(image, {0, 0, 9, 5}), image);
}

TEST(Graph, MatricesOneAfterAnotherAreOne) {
    const Image image = imageFrom(noiseRaster({0, 0, 9, 5}, false, 1));
    EXPECT_EQ(exposureAdjusted(exposureAdjusted(image, 1), -1), image);
    const Matrix3 swap{{{0, 1, 0}, {1, 0, 0}, {0, 0, 1}}}, first{{{2, 3, 0}, {0, 1, 0}, {0, 0, 4}}};
    const Image both = colourMatrix(colourMatrix(image, first), swap); // first, then swap
    EXPECT_EQ(both.node().inputs[0], image);
    const auto renderer = makeReferenceRenderer();
    const Raster in = rendered(*renderer, image, image.extent());
    const Raster out = rendered(*renderer, both, image.extent());
    EXPECT_FLOAT_EQ(at(out, 3, 2, 0), at(in, 3, 2, 1));
    EXPECT_FLOAT_EQ(at(out, 3, 2, 1), 2 * at(in, 3, 2, 0) + 3 * at(in, 3, 2, 1));
    EXPECT_FLOAT_EQ(at(out, 3, 2, 2), 4 * at(in, 3, 2, 2));
}

TEST(Graph, Extents) {
    const Image image = imageFrom(noiseRaster({10, 20, 100, 50}, false, 1));
    EXPECT_EQ(lanczosScaled(image, 0.5).extent(), (PixelRect{5, 10, 50, 25}));
    EXPECT_EQ(lanczosScaled(image, 0.001).extent().size(), (PixelSize{1, 1}));
    EXPECT_EQ(lanczosResized(image, {33, 7}).extent(), (PixelRect{0, 0, 33, 7}));
    EXPECT_EQ(boxBlurred(image, 3).extent(), (PixelRect{7, 17, 106, 56}));
    EXPECT_EQ(clampedToExtent(image).extent(), kInfiniteExtent);
    EXPECT_EQ(cropped(clampedToExtent(image), image.extent()).extent(), image.extent());
    EXPECT_EQ(compositedOver(image, translated(image, -20, 5)).extent(),
              (PixelRect{-10, 20, 120, 55}));
    EXPECT_TRUE(compositedOver(image, translated(image, 1, 0)).hasAlpha());
    EXPECT_FALSE(maximum(image, image).hasAlpha());
}

TEST(Graph, HandWorkedPixels) {
    const Image image = column({1, 4, 7, 0});
    for (const auto& renderer : {makeTiledRenderer(1), makeReferenceRenderer()}) {
        const auto value = [&](const Image& of, int x, int y) {
            return at(rendered(*renderer, of, {x, y, 1, 1}), x, y);
        };
        // y runs upwards: line 0 is the bottom one.
        EXPECT_FLOAT_EQ(value(image, 0, 0), 1);
        EXPECT_FLOAT_EQ(value(image, 0, 3), 0);
        EXPECT_FLOAT_EQ(value(exposureAdjusted(image, 2), 0, 1), 16);
        const Image blurred = boxBlurred(clampedToExtent(image), 1);
        EXPECT_FLOAT_EQ(value(blurred, 0, 0), 2); // (1 + 1 + 4) / 3
        EXPECT_FLOAT_EQ(value(blurred, 0, 1), 4);
        EXPECT_FLOAT_EQ(value(blurred, 5, 3), 7.0f / 3);
        EXPECT_FLOAT_EQ(value(boxBlurred(image, 1), 0, 1), 4.0f / 3); // transparent at the sides
        // Doubled in height: centres at 0.25, 0.75, … of the input, edges repeated.
        const Image tall = stretched(image, {0, 0, 1, 8});
        EXPECT_FLOAT_EQ(value(tall, 0, 0), 1);
        EXPECT_FLOAT_EQ(value(tall, 0, 1), 1.75);
        EXPECT_FLOAT_EQ(value(tall, 0, 2), 3.25);
        EXPECT_FLOAT_EQ(value(tall, 0, 7), 0);
        // A flat picture stays flat under every filter, also across its edges.
        const Image flat =
            imageFrom(madeRaster({0, 0, 40, 30}, false, [](int, int, int) { return 0.18f; }));
        EXPECT_NEAR(value(lanczosScaled(flat, 0.37), 0, 0), 0.18f, 1e-7);
        EXPECT_NEAR(value(lanczosScaled(flat, 2.5), 99, 74), 0.18f, 1e-7);
        EXPECT_NEAR(
            value(affine(flat, {0.9, 0.1, -0.1, 0.9, 4, 4}, flat.extent(), Sampling::lanczos3), 39,
                  0),
            0.18f, 1e-7);
    }
}

} // namespace
} // namespace kelvaro
