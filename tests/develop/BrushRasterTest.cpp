#include "develop/BrushRaster.h"

#include "develop/Pictures.h"
#include "platform/imaging/ReferenceRenderer.h"

#include <gtest/gtest.h>

namespace kelvaro {
namespace {

constexpr PixelSize kSize{64, 48};

MaskComponent brush(std::uint8_t id, std::vector<MaskPoint> points) {
    MaskComponent component;
    component.id.bytes[0] = id;
    component.strokes.push_back({std::move(points), 0.1, 0, 50, false});
    return component;
}

TEST(BrushRaster, IsGreyWeightsWithTheFirstRowAtTheBottom) {
    const auto renderer = makeReferenceRenderer();
    BrushRaster brushes;
    const Raster weights =
        test::drawn(*renderer, brushes.image(brush(1, {{0.25, 0.125}}), kSize)); // at (16, 8)
    ASSERT_EQ(weights.extent(), (PixelRect{0, 0, 64, 48}));
    EXPECT_FALSE(weights.hasAlpha());
    EXPECT_EQ(test::pixelAt(weights, 16, 8),
              (test::Pixel{128 / 255.0f, 128 / 255.0f, 128 / 255.0f, 1}));
    EXPECT_EQ(test::pixelAt(weights, 16, 39)[0], 0);
}

TEST(BrushRaster, ReusesWhatIsUnchangedAndKeepsOldImagesAlive) {
    const auto renderer = makeReferenceRenderer();
    BrushRaster brushes;
    const Image first = brushes.image(brush(1, {{0.2, 0.2}}), kSize);
    EXPECT_EQ(brushes.image(brush(1, {{0.2, 0.2}}), kSize), first);
    EXPECT_FALSE(brushes.image(brush(1, {{0.2, 0.2}}), {32, 24}) == first);

    const Image grown = brushes.image(brush(1, {{0.2, 0.2}, {0.8, 0.6}}), kSize);
    EXPECT_FALSE(grown == first);
    EXPECT_GT(test::pixelAt(test::drawn(*renderer, grown), 51, 38)[0], 0.4f);
    EXPECT_EQ(test::pixelAt(test::drawn(*renderer, first), 51, 38)[0], 0); // as it was
    EXPECT_EQ(brushes.image(brush(1, {{0.2, 0.2}, {0.8, 0.6}}), kSize), grown);
}

TEST(BrushRaster, DropsTheLeastRecentlyUsed) {
    BrushRaster brushes(2);
    const Image one = brushes.image(brush(1, {{0.1, 0.1}}), kSize);
    const Image two = brushes.image(brush(2, {{0.2, 0.2}}), kSize);
    EXPECT_EQ(brushes.image(brush(1, {{0.1, 0.1}}), kSize), one);
    brushes.image(brush(3, {{0.3, 0.3}}), kSize); // in the place of two
    EXPECT_EQ(brushes.count(), 2u);
    EXPECT_EQ(brushes.image(brush(1, {{0.1, 0.1}}), kSize), one);
    EXPECT_FALSE(brushes.image(brush(2, {{0.2, 0.2}}), kSize) == two);
    brushes.clear();
    EXPECT_EQ(brushes.count(), 0u);
}

} // namespace
} // namespace kelvaro
