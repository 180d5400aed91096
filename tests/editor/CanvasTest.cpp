#include "editor/CanvasView.h"
#include "editor/PhotoPlacement.h"
#include "editor/SplitView.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kelvaro {
namespace {

CanvasView canvasOf(ViewSize view, PixelSize picture, double pixelRatio = 1) {
    CanvasView canvas;
    canvas.picture = picture;
    return resized(canvas, view, pixelRatio);
}

TEST(Canvas, FitsWithAirAndNeverEnlarges) {
    const struct {
        CanvasView canvas;
        double scale; // device pixels a photo pixel
    } cases[] = {
        {canvasOf({1048, 848}, {2000, 1000}), 0.5},  {canvasOf({1048, 348}, {2000, 1000}), 0.3},
        {canvasOf({1048, 848}, {2000, 1000}, 2), 1}, // 1000 points are 2000 device pixels
        {canvasOf({1048, 848}, {500, 400}), 1},      {canvasOf({10, 10}, {1000, 1000}), 0.001},
    };
    for (const auto& c : cases) {
        EXPECT_NEAR(c.canvas.scale(), c.scale, 1e-12);
    }
    const Box shown = cases[0].canvas.pictureInView();
    EXPECT_EQ(shown, (Box{24, 174, 1000, 500}));
    EXPECT_EQ(cases[0].canvas.visiblePixels(), (PixelRect{0, 0, 1000, 500}));
    EXPECT_EQ(CanvasView().visiblePixels(), PixelRect());
}

TEST(Canvas, ZoomsAboutThePointerAndStopsAtTheEdges) {
    CanvasView canvas = canvasOf({800, 600}, {6000, 4000});
    const Point pointer{500, 200};
    const Point held = canvas.toPicture(pointer);
    canvas = zoomedTo(canvas, CanvasView::Zoom::actual, pointer);
    const auto isUnderPointer = [&] {
        const Point at = canvas.toView(held);
        return std::hypot(at.x - pointer.x, at.y - pointer.y) <= 0.75; // whole device pixels
    };
    EXPECT_EQ(canvas.scale(), 1);
    EXPECT_TRUE(isUnderPointer());
    canvas = zoomedBy(canvas, wheelZoomFactor(480), pointer);
    EXPECT_NEAR(canvas.scale(), 2, 1e-12);
    EXPECT_TRUE(isUnderPointer());
    for (int i = 0; i < 40; ++i)
        canvas = zoomedBy(canvas, 1.3, pointer);
    EXPECT_EQ(canvas.scale(), CanvasView::mostScale);
    for (int i = 0; i < 80; ++i)
        canvas = zoomedBy(canvas, 1 / 1.3, pointer);
    EXPECT_EQ(canvas.zoom, CanvasView::Zoom::fit);
    EXPECT_EQ(zoomText(canvas), "Fit");

    canvas = zoomToggled(canvas, {0, 0}); // the corner: no gap beside the picture
    EXPECT_EQ(zoomText(canvas), "100%");
    EXPECT_EQ(canvas.visiblePixels(), (PixelRect{0, 3399, 801, 601}));
    canvas = panned(canvas, {-1e9, -1e9});
    EXPECT_EQ(canvas.visiblePixels(), (PixelRect{5200, 0, 800, 600}));
    canvas = panned(canvas, {100, 50}); // the picture follows the hand
    EXPECT_EQ(canvas.centre, (Point{5500, 350}));
    EXPECT_EQ(zoomedBy(canvas, NAN, {0, 0}), canvas);
    // Another photo of the same size keeps the place; a smaller one is centred.
    EXPECT_EQ(withPicture(canvas, {3000, 2000}).centre, (Point{2600, 300}));
    EXPECT_EQ(withPicture(canvas, {400, 200}).centre, (Point{200, 100}));
}

TEST(Canvas, ViewAndPictureAreInverses) {
    CanvasView canvas = canvasOf({801, 600}, {6000, 4000}, 1.5);
    canvas = zoomedBy(canvas, 2.7, {100, 333});
    for (const Point p : {Point{0, 0}, Point{6000, 4000}, Point{123.25, 456.5}}) {
        const Point back = canvas.toPicture(canvas.toView(p));
        EXPECT_NEAR(back.x, p.x, 1e-9);
        EXPECT_NEAR(back.y, p.y, 1e-9);
    }
    EXPECT_GT(canvas.toView({0, 0}).y, canvas.toView({0, 1}).y); // y up against y down
}

TEST(Placement, FollowsCropAndTurn) {
    const PixelSize photo{1000, 600};
    Adjustments edit;
    edit.cropLeft = 0.1;
    edit.cropBottom = 0.5;
    CanvasView canvas = canvasOf({900, 300}, {900, 300});
    canvas = zoomedTo(canvas, CanvasView::Zoom::actual, {450, 150});
    const auto cropped = PhotoPlacement::ofPicture(canvas, edit, photo);
    // The crop's upper left corner is the photo's (100, 600).
    EXPECT_EQ(cropped.toView(Point{100, 600}), (Point{0, 0}));
    EXPECT_EQ(cropped.toView(Point{100, 300}), (Point{0, 300}));
    EXPECT_EQ(cropped.toMask({0, 300}), (MaskPoint{0.1, 0.3}));
    EXPECT_EQ(cropped.toView(MaskPoint{0.1, 0.6}), (Point{0, 0}));

    edit = {};
    edit.straighten = 90.0 / 2; // clockwise as seen
    CanvasView whole = canvasOf({1048, 648}, photo);
    const auto turned = PhotoPlacement::ofWhole(whole, edit, photo);
    const Point right = turned.toView(Point{600, 300}); // 100 right of the middle
    EXPECT_NEAR(right.x, 524 + 100 * std::sqrt(0.5), 1e-9);
    EXPECT_NEAR(right.y, 324 + 100 * std::sqrt(0.5), 1e-9); // down
    const Point back = turned.toPhoto(right);
    EXPECT_NEAR(back.x, 600, 1e-9);
    EXPECT_NEAR(back.y, 300, 1e-9);
}

TEST(Split, AreasLineAndTheHeldOriginal) {
    const Box visible{100, 50, 400, 200};
    SplitView split;
    EXPECT_EQ(splitAreas(split, visible).after, visible);
    EXPECT_FALSE(hitsSplitLine(split, visible, {100, 100}));
    split.isSplit = true;
    split = withSplitAt(split, visible, 200);
    EXPECT_EQ(split.share, 0.25);
    EXPECT_EQ(splitAreas(split, visible).before, (Box{100, 50, 100, 200}));
    EXPECT_EQ(splitAreas(split, visible).after, (Box{200, 50, 300, 200}));
    EXPECT_TRUE(hitsSplitLine(split, visible, {209, 60}));
    EXPECT_FALSE(hitsSplitLine(split, visible, {211, 60}));
    EXPECT_EQ(withSplitAt(split, visible, 9000).share, 1);
    split.originalHeld = true;
    EXPECT_EQ(splitAreas(split, visible).before, visible);
}

} // namespace
} // namespace kelvaro
