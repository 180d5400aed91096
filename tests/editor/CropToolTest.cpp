#include "editor/CropTool.h"

#include "editor/CropRules.h"
#include "editor/OpenEditor.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kelvaro {
namespace {

// Half a point for each pixel: the photo of 1000 × 600 lies at (50, 25) … (550, 325), y down.
CanvasView canvas() {
    CanvasView view;
    view.view = {600, 350};
    view.picture = {1000, 600};
    view.zoom = CanvasView::Zoom::free;
    view.freeScale = 0.5;
    view.centre = {500, 300};
    return view;
}

TEST(CropTool, DragsWithTheScreenAndIsOneStep) {
    test::OpenEditor editor;
    CropTool tool(editor.model);
    EXPECT_EQ(tool.handleAt({50, 25}, canvas()), CropHandle::topLeft);
    EXPECT_EQ(tool.handleAt({300, 325}, canvas()), CropHandle::bottom);
    EXPECT_EQ(tool.handleAt({20, 340}, canvas()), CropHandle::rotate);
    ASSERT_TRUE(tool.begin({50, 25}, canvas()));
    EXPECT_TRUE(tool.state().dragging);
    tool.drag({80, 35}, canvas());
    tool.drag({100, 55}, canvas()); // 50 right and 30 down: 100 and 60 pixels
    EXPECT_EQ(tool.end(), std::nullopt);
    EXPECT_NEAR(editor.model.edit().cropLeft, 0.1, 1e-12);
    EXPECT_NEAR(editor.model.edit().cropTop, 0.1, 1e-12);
    EXPECT_EQ(editor.model.edit().cropBottom, 0);
    editor.model.undo();
    EXPECT_EQ(editor.model.edit(), Adjustments());
    EXPECT_FALSE(editor.model.canUndo());
}

TEST(CropTool, RotatesFromOutsideAndShrinksTheCrop) {
    test::OpenEditor editor;
    CropTool tool(editor.model);
    const Point centre{300, 175};
    const auto at = [&](double degrees) { // as seen, counter-clockwise
        const double a = degrees * 3.14159265358979 / 180;
        return Point{centre.x + 290 * std::cos(a), centre.y - 290 * std::sin(a)};
    };
    ASSERT_TRUE(tool.begin(at(0), canvas()));
    EXPECT_TRUE(tool.state().rotating);
    tool.drag(at(20), canvas());
    tool.drag(at(-10), canvas());
    EXPECT_EQ(tool.end(), "Straightened +10.0°");
    EXPECT_NEAR(editor.model.edit().straighten, 10, 1e-9);
    const Box crop = cropBox(editor.model.edit(), {1000, 600});
    EXPECT_NEAR(crop.width / crop.height, 1000.0 / 600, 1e-3);
    EXPECT_LT(crop.width, 900);
    EXPECT_TRUE(tool.straightenTyped("0"));
    EXPECT_FALSE(tool.straightenTyped("ten"));
    // A drag that is given up leaves no trace.
    const Adjustments before = editor.model.edit();
    ASSERT_TRUE(tool.begin(at(0), canvas()));
    tool.drag(at(-30), canvas());
    tool.cancel();
    EXPECT_EQ(editor.model.edit(), before);
}

TEST(CropTool, AspectsApplyAtOnce) {
    test::OpenEditor editor;
    CropTool tool(editor.model);
    const auto shape = [&] {
        const Box crop = cropBox(editor.model.edit(), {1000, 600});
        return crop.width / crop.height;
    };
    tool.setAspect(Aspect::fourToFive); // the photo lies, so does the crop
    EXPECT_NEAR(shape(), 1.25, 1e-6);
    EXPECT_EQ(orientationTip(tool.state().portrait), "Landscape (click for portrait)");
    tool.togglePortrait();
    EXPECT_NEAR(shape(), 0.8, 1e-6);
    EXPECT_EQ(orientationTip(tool.state().portrait), "Portrait (click for landscape)");
    EXPECT_TRUE(tool.standsUpright());
    tool.setAspect(Aspect::original);
    EXPECT_NEAR(shape(), 1000.0 / 600, 1e-6);
    tool.reset();
    EXPECT_EQ(editor.model.edit(), Adjustments());
}

// "Original" of an upright photo is upright; the toggle lays it down and says what is seen.
TEST(CropTool, OriginalFollowsAnUprightPhoto) {
    test::OpenEditor editor({}, {600, 1000});
    CropTool tool(editor.model);
    const auto shape = [&] {
        const Box crop = cropBox(editor.model.edit(), {600, 1000});
        return crop.width / crop.height;
    };
    tool.setAspect(Aspect::original);
    EXPECT_NEAR(shape(), 0.6, 1e-6);
    EXPECT_TRUE(tool.standsUpright());
    tool.togglePortrait();
    EXPECT_NEAR(shape(), 1 / 0.6, 1e-3);
    EXPECT_FALSE(tool.standsUpright());
    tool.setAspect(Aspect::fourToFive); // goes on lying, as the user chose
    EXPECT_NEAR(shape(), 1.25, 1e-3);
    tool.togglePortrait();
    tool.setAspect(Aspect::original); // its own shape, whatever was chosen before
    EXPECT_NEAR(shape(), 0.6, 1e-3);
    EXPECT_TRUE(tool.standsUpright());
    tool.reset();
    tool.setAspect(Aspect::fourToFive);
    EXPECT_NEAR(shape(), 0.8, 1e-3);
}

TEST(CropTool, ALineAlongTheHorizonMakesItLevel) {
    test::OpenEditor editor;
    CropTool tool(editor.model);
    tool.straighten(4); // the line is drawn on the picture as it is shown, turned already
    // On the screen it still rises to the right by 3 degrees.
    EXPECT_EQ(tool.straightenAlong({100, 200}, {300, 200 - 200 * std::tan(3 * 0.0174532925199433)},
                                   canvas()),
              "Straightened +7.0°");
}

} // namespace
} // namespace kelvaro
