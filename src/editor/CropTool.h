// One crop or rotation drag on the canvas, and the choices beside it. View points are the window's,
// y down; the canvas shows the whole photo, turned under an upright crop. Main thread.
#pragma once

#include "editor/CanvasView.h"
#include "editor/CropHandles.h"
#include "editor/CropState.h"
#include "editor/EditorModel.h"

namespace kelvaro {

class CropTool {
public:
    explicit CropTool(EditorModel& editor);

    const CropState& state() const { return state_; }
    std::optional<CropHandle> active() const { return active_; }
    // What the orientation toggle shows: of "Original" what its shape is, which for an upright
    // photo is upright while `portrait`, which inverts, is not set.
    bool standsUpright() const;

    // The crop as drawn, in upright view points (y up, 0 at the view's upper edge); none where
    // there is nothing to draw.
    std::optional<Box> drawnCrop(const CanvasView& canvas) const;
    std::optional<CropHandle> handleAt(Point viewPoint, const CanvasView& canvas) const;

    // False where nothing is hit, or the photo can't be changed.
    bool begin(Point viewPoint, const CanvasView& canvas);
    void drag(Point viewPoint, const CanvasView& canvas);
    // The notice after a rotation, else nothing.
    std::optional<std::string> end();
    void cancel();

    // Applies the ratio to the crop at once.
    void setAspect(Aspect aspect);
    void togglePortrait();
    // The crop of the whole photo, at angle 0.
    void reset();
    void resetStraighten() { straighten(0); }
    void straighten(double degrees);
    // False, with the edit unchanged, when the text is no number.
    bool straightenTyped(std::string_view text);
    // Both ends of a line drawn along a horizon, in view points.
    std::optional<std::string> straightenAlong(Point from, Point to, const CanvasView& canvas);

private:
    static Point upright(Point viewPoint) { return {viewPoint.x, -viewPoint.y}; }
    std::optional<double> ratio() const;
    void applyRatio(std::string name);

    EditorModel& editor_;
    CropState state_;
    std::optional<CropHandle> active_;
    Adjustments startEdit_;
    Box startRect_;    // photo pixels
    Point startPoint_; // upright view points
    double startStraighten_ = 0, startBearing_ = 0;
};

} // namespace kelvaro
