#include "editor/StrokeBuilder.h"

#include "develop/BrushPainting.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kelvaro {
namespace {

TEST(Brush, KeysPressureAndCursor) {
    BrushTool brush;
    EXPECT_NEAR(resized(brush, 6).radius, 0.1, 1e-9);
    EXPECT_NEAR(resized(resized(brush, 6), -6).radius, 0.05, 1e-12);
    EXPECT_EQ(resized(brush, 900).radius, BrushTool::mostRadius);
    EXPECT_EQ(softened(brush, 9).feather, 100);
    brush.flow = 80;
    const struct {
        double pressure;
        bool hasPressure;
        double flow;
    } cases[] = {{0.5, true, 40}, {0.5, false, 80}, {0, true, 80}, // a device that sends 0
                 {NAN, true, 80}, {0.001, true, 4}, {7, true, 80}};
    for (const auto& c : cases) {
        EXPECT_NEAR(flowAtPressure(brush, c.pressure, c.hasPressure), c.flow, 1e-12);
    }
    brush.optionHeld = true;
    EXPECT_TRUE(brush.erases());
    brush.erase = true;
    EXPECT_FALSE(brush.erases());
    EXPECT_EQ(brushCursor(brush, 1000), (BrushCursor{50, 25, false}));
}

// A thousand events a second over four seconds of scribbling: the points that are left draw what
// all of them would, and painting always goes on where it stopped.
TEST(Stroke, KeepsWhatTheRasterNeeds) {
    BrushTool brush;
    brush.radius = 0.02;
    StrokeBuilder builder(brush, false);
    MaskComponent thinned;
    BrushStroke all;
    all.radius = brush.radius;
    BrushPainter painter({2048, 1365});
    constexpr int events = 4000;
    for (int i = 0; i < events; ++i) {
        const double t = i * 0.0015;
        const MaskPoint at{0.5 + 0.4 * std::cos(t), 0.33 + 0.25 * std::sin(1.7 * t)};
        all.points.push_back(at);
        const bool added = i == 0 ? builder.begin(thinned, at, 1) : builder.add(thinned, at, 1);
        if (!added) continue;
        ASSERT_TRUE(painter.canGoOnTo(thinned.strokes));
        painter.goOnTo(thinned.strokes);
    }
    EXPECT_LT(thinned.strokes[0].points.size(), events * 0.6);
    BrushPainter reference({2048, 1365});
    reference.goOnTo({all});
    // Dabs shift along the path by up to a quarter of their spacing: what one drew at more than
    // half, the other has not left empty.
    for (int y = 0; y < 1365; ++y) {
        for (int x = 0; x < 2048; ++x) {
            const int a = painter.canvas().row(y)[x], b = reference.canvas().row(y)[x];
            ASSERT_LT(std::abs(a - b), 64) << x << ", " << y;
        }
    }
}

TEST(Stroke, PressureStraightLinesAndLongPaths) {
    BrushTool brush;
    brush.radius = 0.004;
    StrokeBuilder pen(brush, true);
    MaskComponent shape;
    EXPECT_FALSE(pen.add(shape, {0.1, 0.1}, 1)); // nothing was begun
    EXPECT_FALSE(pen.begin(shape, {NAN, 0}, 1));
    ASSERT_TRUE(pen.begin(shape, {0.1, 0.1}, 1));
    EXPECT_FALSE(pen.add(shape, {0.1, 0.1}, 1)); // the hand rests
    EXPECT_TRUE(pen.add(shape, {0.2, 0.1}, 0.97));
    EXPECT_TRUE(pen.add(shape, {0.3, 0.1}, 0.6)); // goes on weaker from where it was
    ASSERT_EQ(shape.strokes.size(), 2u);
    EXPECT_EQ(shape.strokes[1].points, (std::vector<MaskPoint>{{0.2, 0.1}, {0.3, 0.1}}));
    EXPECT_NEAR(shape.strokes[1].flow, 60, 1e-9);
    EXPECT_TRUE(pen.add(shape, {0.35, 0.1}, 0)); // is lifted
    EXPECT_NEAR(shape.strokes[2].flow, 5, 1e-9);
    // A device that sends nothing else.
    EXPECT_TRUE(pen.beginFromLast(shape, {0.9, 0.9}, 0));
    EXPECT_EQ(shape.strokes[3].points, (std::vector<MaskPoint>{{0.35, 0.1}, {0.9, 0.9}}));
    EXPECT_EQ(shape.strokes[3].flow, 100);
    pen.add(shape, {900, -900}, 0);
    EXPECT_EQ(shape.strokes[3].points.back(), (MaskPoint{5, -4}));

    MaskComponent lengthy;
    StrokeBuilder mouse(brush, false);
    mouse.begin(lengthy, {0, 0}, 0);
    for (int i = 1; i <= 9000; ++i)
        mouse.add(lengthy, {i % 2 * 0.5, i / 9000.0}, 0);
    ASSERT_EQ(lengthy.strokes.size(), 3u);
    for (const BrushStroke& stroke : lengthy.strokes) {
        EXPECT_LE(stroke.points.size(), StrokeBuilder::mostPoints);
    }
    EXPECT_EQ(lengthy.strokes[0].points.back(), lengthy.strokes[1].points.front());
}

} // namespace
} // namespace kelvaro
