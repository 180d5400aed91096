#include "develop/CropGeometry.h"

#include "develop/Pictures.h"
#include "platform/imaging/ReferenceRenderer.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>

namespace kelvaro {
namespace {

using test::drawn;
using test::imageOf;
using test::pixelAt;

Adjustments cropBy(double left, double right, double top, double bottom, double straighten = 0) {
    Adjustments edit;
    edit.cropLeft = left;
    edit.cropRight = right;
    edit.cropTop = top;
    edit.cropBottom = bottom;
    edit.straighten = straighten;
    return edit;
}

TEST(CropGeometry, CountsFromTheTopAndKeepsTwoPercent) {
    const struct {
        Adjustments edit;
        PixelSize photo;
        double x, y, width, height;
        PixelRect pixels;
    } cases[] = {
        {cropBy(0, 0, 0, 0), {100, 80}, 0, 0, 100, 80, {0, 0, 100, 80}},
        {cropBy(0.1, 0.2, 0.25, 0.5), {100, 80}, 10, 40, 70, 20, {10, 40, 70, 20}},
        {cropBy(0.6, 0.6, 0, 0.98), {100, 100}, 60, 98, 2, 2, {60, 98, 2, 2}},
        {cropBy(0.98, 0.98, 0.98, 0.98), {100, 100}, 98, 0, 2, 2, {98, 0, 2, 2}},
        {cropBy(0.125, 0, 0, 0.375), {10, 10}, 1.25, 3.75, 8.75, 6.25, {1, 4, 9, 6}},
        {cropBy(0.98, 0, 0, 0.98), {3, 3}, 2.94, 2.94, 0.06, 0.06, {2, 2, 1, 1}},
        {cropBy(0.5, 0.5, 0.5, 0.5), {1, 1}, 0.5, 0.48, 0.02, 0.02, {0, 0, 1, 1}},
    };
    for (const auto& c : cases) {
        const CropGeometry geometry = CropGeometry::of(c.edit, c.photo);
        EXPECT_NEAR(geometry.x, c.x, 1e-9);
        EXPECT_NEAR(geometry.y, c.y, 1e-9);
        EXPECT_NEAR(geometry.width, c.width, 1e-9);
        EXPECT_NEAR(geometry.height, c.height, 1e-9);
        EXPECT_EQ(geometry.pixels(c.photo), c.pixels) << c.x << ", " << c.y;
    }
}

TEST(CropGeometry, CentredHalvesAndTurn) {
    const CropGeometry geometry = CropGeometry::of(cropBy(0.5, 0, 0.25, 0, 30), {100, 80});
    const auto crop = geometry.centredHalves({100, 80});
    EXPECT_NEAR(crop[0], 25, 1e-9);  // 50 … 100 of 100
    EXPECT_NEAR(crop[1], -10, 1e-9); // 0 … 60 of 80, y up
    EXPECT_NEAR(crop[2], 25, 1e-9);
    EXPECT_NEAR(crop[3], 30, 1e-9);
    EXPECT_NEAR(geometry.turnRadians, -std::numbers::pi / 6, 1e-12);
}

TEST(Cropping, WithoutStraighteningIsACopy) {
    const auto renderer = makeReferenceRenderer();
    const Image photo = imageOf({10, 8}, [](int x, int y) {
        return test::Pixel{float(x), float(y), 0.1f, 1};
    });
    EXPECT_EQ(straightenedAndCropped(photo, Adjustments{}), photo);

    const Raster cut = drawn(*renderer, straightenedAndCropped(photo, cropBy(0.2, 0.1, 0.5, 0)));
    ASSERT_EQ(cut.extent(), (PixelRect{0, 0, 7, 4}));
    EXPECT_EQ(pixelAt(cut, 0, 0), (test::Pixel{2, 0, 0.1f, 1})); // the bottom rows are kept
    EXPECT_EQ(pixelAt(cut, 6, 3), (test::Pixel{8, 3, 0.1f, 1}));
}

TEST(Cropping, PositiveStraightenTurnsClockwise) {
    const auto renderer = makeReferenceRenderer();
    // A bright spot right of the centre goes down by 45°: (7, 0) becomes (4.95, -4.95).
    const Image photo = imageOf({21, 21}, [](int x, int y) {
        const float value = std::abs(x - 17) <= 1 && std::abs(y - 10) <= 1 ? 1.0f : 0.0f;
        return test::Pixel{value, value, value, 1};
    });
    const Raster turned = drawn(*renderer, straightenedAndCropped(photo, cropBy(0, 0, 0, 0, 45)));
    ASSERT_EQ(turned.extent(), (PixelRect{0, 0, 21, 21}));
    EXPECT_GT(pixelAt(turned, 15, 5)[0], 0.9f);
    EXPECT_LT(std::abs(pixelAt(turned, 15, 15)[0]), 0.05f);

    // The crop is cut from the turned photo, and half the scale is the same picture, smaller.
    const Adjustments edit = cropBy(0.5, 0, 0.5, 0, 45);
    const Raster corner = drawn(*renderer, straightenedAndCropped(photo, edit));
    ASSERT_EQ(corner.extent().size(), (PixelSize{10, 11}));
    EXPECT_GT(pixelAt(corner, 4, 5)[0],
              0.9f); // pixels (11 …, 0 …): the spot's centre at 15.45, 5.55
    const Raster half = drawn(*renderer, straightenedAndCropped(photo, edit, 0.5));
    ASSERT_EQ(half.extent().size(), (PixelSize{5, 6}));
    EXPECT_GT(pixelAt(half, 2, 2)[0], 0.9f);
}

TEST(Cropping, AConstantPhotoStaysConstantUpToItsEdges) {
    const auto renderer = makeReferenceRenderer();
    const Image photo = imageOf({30, 17}, [](int, int) { return test::Pixel{0.3f, 2, -0.1f, 1}; });
    const Raster turned = drawn(*renderer, straightenedAndCropped(photo, cropBy(0, 0, 0, 0, -7)));
    for (const int x : {0, 15, 29})
        for (const int y : {0, 8, 16}) {
            EXPECT_NEAR(pixelAt(turned, x, y)[0], 0.3f, 1e-6f);
            EXPECT_NEAR(pixelAt(turned, x, y)[1], 2, 1e-5f);
        }
}

TEST(LongEdge, ReducesAndNeverEnlarges) {
    const Image photo = imageOf({300, 199}, [](int, int) { return test::Pixel{1, 1, 1, 1}; });
    EXPECT_EQ(reducedToLongEdge(photo, 100).extent(), (PixelRect{0, 0, 100, 66}));
    for (const double longEdge : {300.0, 4000.0, 0.5, -3.0, std::nan("")})
        EXPECT_EQ(reducedToLongEdge(photo, longEdge), photo) << longEdge;
    const Image thin = imageOf({1, 500}, [](int, int) { return test::Pixel{1, 1, 1, 1}; });
    EXPECT_EQ(reducedToLongEdge(thin, 50).extent(), (PixelRect{0, 0, 1, 50}));
}

} // namespace
} // namespace kelvaro
