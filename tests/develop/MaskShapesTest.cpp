#include "develop/MaskShapes.h"

#include "develop/BrushRaster.h"
#include "develop/Pictures.h"
#include "platform/imaging/ReferenceRenderer.h"

#include <gtest/gtest.h>

namespace kelvaro {
namespace {

// A photo of 100 × 50: normalised points are multiplied by 100, its longer side.
constexpr PixelRect kPhoto{0, 0, 100, 50};

MaskComponent linear(MaskPoint start, MaskPoint end) {
    MaskComponent component;
    component.kind = MaskComponent::Kind::linear;
    component.start = start;
    component.end = end;
    return component;
}

MaskComponent ellipse(MaskPoint centre, MaskPoint radii, double angle, double feather) {
    MaskComponent component;
    component.kind = MaskComponent::Kind::radial;
    component.start = centre;
    component.end = radii;
    component.angle = angle;
    component.feather = feather;
    return component;
}

class MaskShapes : public testing::Test {
protected:
    double at(const LocalMask& mask, int x, int y) {
        return test::pixelAt(test::drawn(*renderer_, maskWeight(mask, kPhoto, brushes_)), x, y)[0];
    }
    double at(const MaskComponent& component, int x, int y) {
        LocalMask mask;
        mask.components = {component};
        return at(mask, x, y);
    }
    std::unique_ptr<Renderer> renderer_ = makeReferenceRenderer();
    BrushRaster brushes_;
};

TEST_F(MaskShapes, LinearIsFullAtItsStart) {
    const auto ramp = linear({0.205, 0}, {0.605, 0}); // from x = 20.5 to 60.5
    EXPECT_EQ(at(ramp, 5, 0), 1);
    EXPECT_EQ(at(ramp, 20, 49), 1);
    EXPECT_NEAR(at(ramp, 30, 10), 1 - 0.25 * 0.25 * (3 - 0.5), 1e-7); // a quarter of the way
    EXPECT_NEAR(at(ramp, 40, 30), 0.5, 1e-7);
    EXPECT_EQ(at(ramp, 60, 0), 0);
    auto inverted = ramp;
    inverted.invert = true;
    EXPECT_NEAR(at(inverted, 30, 10), 0.15625, 1e-7);
}

TEST_F(MaskShapes, RadialTurnsCounterClockwise) {
    // Radii 40 and 10 about (50.5, 25.5), turned by 90°: now 10 wide and 40 high.
    const auto turned = ellipse({0.505, 0.255}, {0.4, 0.1}, 90, 0);
    EXPECT_EQ(at(turned, 50, 45), 1);
    EXPECT_EQ(at(turned, 65, 25), 0);
    // By 45° it points up and right, with y up.
    const auto diagonal = ellipse({0.505, 0.255}, {0.3, 0.05}, 45, 0);
    EXPECT_EQ(at(diagonal, 65, 40), 1);
    EXPECT_EQ(at(diagonal, 65, 10), 0);
    // Feather 50 begins at half the radius: at 30 of 40, 1 - smoothstep(0.5, 1, 0.75).
    EXPECT_NEAR(at(ellipse({0.505, 0.255}, {0.4, 0.4}, 0, 50), 80, 25), 0.5, 1e-7);
}

TEST_F(MaskShapes, BrushIsStretchedOverThePhoto) {
    MaskComponent brush;
    brush.strokes.push_back({{{0.25, 0.125}}, 0.05, 0, 100, false}); // at (25, 12.5), radius 5
    EXPECT_NEAR(at(brush, 25, 12), 1, 1e-6);
    EXPECT_NEAR(at(brush, 28, 12), 1, 1e-6);
    EXPECT_EQ(at(brush, 31, 12), 0);
    EXPECT_EQ(at(brush, 25, 37), 0); // not upside down
    brush.invert = true;
    EXPECT_NEAR(at(brush, 31, 12), 1, 1e-6);
    EXPECT_NEAR(at(brush, 25, 12), 0, 1e-6);
}

TEST_F(MaskShapes, CombinesInOrderAndFinishes) {
    const auto half = linear({0.005, 0}, {1.005, 0});     // 0.5 at x = 50
    const auto quarter = linear({-0.245, 0}, {0.755, 0}); // 0.15625 at x = 50
    using Mode = MaskComponent::Mode;
    const auto combined = [&](Mode first, Mode second, bool invert, double amount) {
        LocalMask mask;
        mask.components = {half, quarter};
        mask.components[0].mode = first;
        mask.components[1].mode = second;
        mask.invert = invert;
        mask.amount = amount;
        return at(mask, 50, 20);
    };
    EXPECT_NEAR(combined(Mode::add, Mode::add, false, 100), 0.5, 1e-7);
    EXPECT_NEAR(combined(Mode::add, Mode::subtract, false, 100), 0.5 * 0.84375, 1e-7);
    EXPECT_NEAR(combined(Mode::add, Mode::intersect, false, 100), 0.5 * 0.15625, 1e-7);
    EXPECT_NEAR(combined(Mode::subtract, Mode::add, false, 100), 0.5,
                1e-7); // the first is the start
    EXPECT_NEAR(combined(Mode::add, Mode::intersect, true, 60), 0.6 * (1 - 0.078125), 1e-7);
}

TEST_F(MaskShapes, OverlayShowsTheEditedMaskAndAllEnabledOnes) {
    LocalMask left, right, off;
    left.id.bytes[0] = 1;
    right.id.bytes[0] = 2;
    off.id.bytes[0] = 3;
    left.amount = 10; // the shape is shown, not its strength
    off.enabled = false;
    left.components = {ellipse({0.2, 0.25}, {0.1, 0.1}, 0, 0)};
    right.components = {ellipse({0.8, 0.25}, {0.1, 0.1}, 0, 0)};
    off.components = {ellipse({0.5, 0.25}, {0.1, 0.1}, 0, 0)};
    const std::vector<LocalMask> masks{left, right, off, LocalMask{}};
    const auto shown = [&](MaskOverlay overlay) {
        const Image weight = overlayWeight(masks, overlay, kPhoto, brushes_);
        std::string places;
        if (!weight) return places;
        const Raster pixels = test::drawn(*renderer_, weight);
        for (const int x : {20, 50, 80})
            places += test::pixelAt(pixels, x, 25)[0] > 0.99f ? 'x' : '.';
        return places;
    };
    EXPECT_EQ(shown({}), "");
    EXPECT_EQ(shown({left.id, false}), "x..");
    EXPECT_EQ(shown({off.id, false}), ".x.");
    EXPECT_EQ(shown({std::nullopt, true}), "x.x");
    EXPECT_EQ(shown({off.id, true}), "xxx");
}

} // namespace
} // namespace kelvaro
