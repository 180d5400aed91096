#include "editor/MaskTools.h"

#include "editor/MaskHandles.h"
#include "editor/MaskList.h"
#include "fakes/SeededRandom.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kelvaro {
namespace {

constexpr PixelSize photo{1000, 600};

// Half a point for each pixel, the photo at (0, 0) … (500, 300) of the view: 500 points are 1.
PhotoPlacement placement(double straighten = 0) {
    CanvasView canvas;
    canvas.view = {500, 300};
    canvas.picture = photo;
    canvas.zoom = CanvasView::Zoom::free;
    canvas.freeScale = 0.5;
    canvas.centre = {500, 300};
    Adjustments edit;
    edit.straighten = straighten;
    return PhotoPlacement::ofWhole(canvas, edit, photo);
}

MaskComponent ellipse() {
    MaskComponent shape;
    shape.kind = MaskComponent::Kind::radial;
    shape.start = {0.5, 0.3}; // (250, 150) in the view
    shape.end = {0.2, 0.1};   // 100 and 50 points
    return shape;
}

TEST(MaskList, NamesOrderAndCopies) {
    using Kind = MaskComponent::Kind;
    Adjustments edit;
    SeededRandom random;
    const Uuid first = addMask(edit, Kind::brush, photo, random);
    const Uuid second = addMask(edit, Kind::brush, photo, random);
    const Uuid third = addMask(edit, Kind::radial, photo, random);
    const auto names = [&] {
        std::string text;
        for (const LocalMask& mask : edit.masks)
            text += mask.name + ", ";
        return text;
    };
    EXPECT_EQ(names(), "Brush, Brush 2, Radial, ");
    const struct {
        Uuid mask;
        std::size_t to;
        const char* names;
    } moves[] = {{first, 3, "Brush 2, Radial, Brush, "},  {first, 0, "Brush, Brush 2, Radial, "},
                 {second, 1, "Brush, Brush 2, Radial, "}, {second, 2, "Brush, Brush 2, Radial, "},
                 {third, 1, "Brush, Radial, Brush 2, "},  {third, 99, "Brush, Brush 2, Radial, "},
                 {Uuid(), 1, "Brush, Brush 2, Radial, "}};
    for (const auto& m : moves) {
        moveMask(edit, m.mask, m.to);
        EXPECT_EQ(names(), m.names);
    }
    const auto copy = duplicateMask(edit, first, random);
    ASSERT_TRUE(copy);
    EXPECT_EQ(names(), "Brush, Brush copy, Brush 2, Radial, ");
    EXPECT_NE(edit.masks[0].components[0].id, edit.masks[1].components[0].id);
    renameMask(edit, *copy, "  Sky\n(left) ");
    EXPECT_EQ(edit.masks[1].name, "Sky (left)");
    renameMask(edit, *copy, " \t ");
    EXPECT_EQ(edit.masks[1].name, "Sky (left)");
    renameMask(edit, *copy, std::string(199, 'a') + "é"); // the letter has two bytes
    EXPECT_EQ(edit.masks[1].name, std::string(199, 'a'));
    removeMask(edit, *copy);
    const auto added = addMask(edit, Kind::brush, photo, random);
    EXPECT_EQ(added, edit.masks.back().id);
    EXPECT_EQ(edit.masks.back().name, "Brush 3");
}

TEST(MaskList, ShapesAmountAndControls) {
    Adjustments edit;
    SeededRandom random;
    const Uuid mask = addMask(edit, MaskComponent::Kind::linear, photo, random);
    const auto shape = addShape(edit, mask, MaskComponent::Kind::radial,
                                MaskComponent::Mode::subtract, photo, random);
    ASSERT_TRUE(shape);
    EXPECT_EQ(edit.masks[0].components[1].end, (MaskPoint{0.25, 0.15}));
    invertMask(edit, mask);
    invertShape(edit, mask, *shape);
    setMaskAmount(edit, mask, 250);
    setMaskEnabled(edit, mask, false);
    EXPECT_TRUE(edit.masks[0].invert && edit.masks[0].components[1].invert);
    EXPECT_EQ(edit.masks[0].amount, 100);
    EXPECT_FALSE(edit.masks[0].enabled);
    setMaskAmount(edit, mask, 40);
    setMaskAmount(edit, mask, NAN);
    edit.masks[0].clarity = 12;
    EXPECT_EQ(edit.masks[0].amount, 40);
    resetMaskControls(edit, mask);
    EXPECT_EQ(edit.masks[0].clarity, 0);
    removeShape(edit, mask, *shape);
    EXPECT_EQ(edit.masks[0].components.size(), 1u);
}

TEST(MaskHandles, EllipseHandlesStandAndAreHit) {
    const MaskComponent shape = ellipse();
    const PhotoPlacement place = placement();
    const struct {
        Point at;
        std::optional<MaskHandle> handle;
    } cases[] = {
        {{250, 150}, MaskHandle::move},   {{350, 150}, MaskHandle::right},
        {{362, 150}, MaskHandle::right},  {{150, 150}, MaskHandle::left},
        {{250, 100}, MaskHandle::top},    {{250, 200}, MaskHandle::bottom},
        {{290, 150}, MaskHandle::move},   // inside
        {{375, 150}, MaskHandle::rotate}, // just outside
        {{480, 280}, std::nullopt},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(maskHandleAt(c.at, shape, place), c.handle) << c.at.x << ", " << c.at.y;
    }
}

TEST(MaskHandles, DraggingAnEllipse) {
    const PhotoPlacement place = placement();
    const auto dragged = [&](MaskHandle handle, Point from, Point to, bool even = false) {
        return draggedShape(ellipse(), handle, from, to, place, even);
    };
    const MaskComponent moved = dragged(MaskHandle::move, {250, 150}, {300, 100});
    EXPECT_NEAR(moved.start.x, 0.6, 1e-12);
    EXPECT_NEAR(moved.start.y, 0.4, 1e-12);
    EXPECT_NEAR(dragged(MaskHandle::right, {350, 150}, {400, 170}).end.x, 0.3, 1e-12);
    EXPECT_NEAR(dragged(MaskHandle::left, {150, 150}, {200, 150}).end.x, 0.1, 1e-12);
    EXPECT_NEAR(dragged(MaskHandle::top, {250, 100}, {250, 75}, true).end.x, 0.3, 1e-12);
    EXPECT_GT(dragged(MaskHandle::bottom, {250, 200}, {250, -500}).end.y, 0); // past the centre
    // A quarter turn counter-clockwise as seen, from right to top.
    EXPECT_NEAR(dragged(MaskHandle::rotate, {370, 150}, {250, 30}).angle, 90, 1e-9);
    EXPECT_NEAR(dragged(MaskHandle::rotate, {370, 150}, {370, 120}, true).angle, 15, 1e-9);
    // Feather 50 begins at half the radius; a tenth of a radius further out it is 40.
    EXPECT_NEAR(dragged(MaskHandle::feather, {300, 150}, {310, 150}).feather, 40, 1e-9);
    EXPECT_EQ(dragged(MaskHandle::feather, {300, 150}, {900, 150}).feather, 0);
    // Turned by a quarter, the axis that points up on the screen is the horizontal one.
    MaskComponent turned = ellipse();
    turned.angle = 90;
    EXPECT_NEAR(draggedShape(turned, MaskHandle::right, {250, 50}, {250, 0}, place).end.x, 0.3,
                1e-9);
}

TEST(MaskHandles, GradientsMoveTurnAndAreDrawn) {
    const PhotoPlacement place = placement();
    MaskComponent line;
    line.kind = MaskComponent::Kind::linear;
    const auto drawn = drawnShape(line, {100, 50}, {100, 250}, place);
    ASSERT_TRUE(drawn);
    EXPECT_EQ(drawn->start, (MaskPoint{0.2, 0.5}));
    EXPECT_EQ(drawn->end, (MaskPoint{0.2, 0.1}));
    EXPECT_EQ(drawnShape(line, {100, 50}, {101, 50}, place), std::nullopt);
    EXPECT_EQ(maskHandleAt({100, 52}, *drawn, place), MaskHandle::start);
    EXPECT_EQ(maskHandleAt({100, 250}, *drawn, place), MaskHandle::end);
    EXPECT_EQ(maskHandleAt({108, 110}, *drawn, place), MaskHandle::move);
    EXPECT_EQ(maskHandleAt({140, 110}, *drawn, place), std::nullopt);
    const MaskComponent end = draggedShape(*drawn, MaskHandle::end, {100, 250}, {150, 250}, place);
    EXPECT_EQ(end.start, drawn->start);
    EXPECT_NEAR(end.end.x, 0.3, 1e-12);
    for (const MaskHandlePoint& handle : maskHandles(*drawn, place)) {
        if (handle.handle != MaskHandle::rotate) continue;
        // Pulled a quarter around the middle: the line lies level.
        const Point to{100 + (handle.at.y - 150), 150 - (handle.at.x - 100)};
        const MaskComponent level = draggedShape(*drawn, MaskHandle::rotate, handle.at, to, place);
        EXPECT_NEAR(level.start.y, 0.3, 1e-9);
        EXPECT_NEAR(level.end.y, 0.3, 1e-9);
        EXPECT_NEAR(std::abs(level.start.x - level.end.x), 0.4, 1e-9);
    }
    // On a straightened photo an ellipse is drawn upright as it is seen.
    const PhotoPlacement turned = placement(30);
    MaskComponent radial;
    radial.kind = MaskComponent::Kind::radial;
    const auto seen = drawnShape(radial, {250, 150}, {350, 200}, turned);
    ASSERT_TRUE(seen);
    EXPECT_NEAR(seen->angle, 30, 1e-9);
    EXPECT_NEAR(seen->end.x, 0.2, 1e-9);
    EXPECT_NEAR(seen->end.y, 0.1, 1e-9);
}

TEST(MaskTools, SelectionOverlayAndWords) {
    Adjustments edit;
    SeededRandom random;
    MaskToolState state;
    EXPECT_EQ(overlayTip(state), "Show where all the masks apply, in orange (O)");
    state.overlay = true;
    EXPECT_TRUE(shownOverlay(state).all);
    EXPECT_EQ(overlayTip(state), "Hide the orange overlay (O)");
    state.mask = addMask(edit, MaskComponent::Kind::brush, photo, random);
    state = consistent(state, edit);
    EXPECT_EQ(state.shape, edit.masks[0].components[0].id);
    EXPECT_EQ(overlayTip(state), "Hide this mask's orange overlay (O)");
    EXPECT_EQ(shownOverlay(state).mask, state.mask);
    EXPECT_FALSE(shownOverlay(state).all);
    state.overlay = false;
    EXPECT_EQ(overlayTip(state), "Show where this mask applies, in orange (O)");
    EXPECT_EQ(shownOverlay(state).mask, std::nullopt);
    state.isPainting = true;
    EXPECT_EQ(shownOverlay(state).mask, state.mask);
    EXPECT_EQ(consistent(state, {}).mask, std::nullopt);
    EXPECT_EQ(consistent(state, {}).shape, std::nullopt);
}

} // namespace
} // namespace kelvaro
