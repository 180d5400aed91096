// The handles of gradients and ellipses: where they stand in the view, which one a pointer hits,
// and what a shape becomes when one is dragged. View points, y down; shapes in mask coordinates.
// Pure functions.
#pragma once

#include "editor/PhotoPlacement.h"

#include <optional>
#include <vector>

namespace kelvaro {

enum class MaskHandle {
    start, // linear: where the gradient begins
    end,   // linear: where it ends
    move,  // the line's middle, the ellipse's centre, or inside the ellipse
    right, // of the ellipse, at the ends of its axes as it is turned
    left,
    top,
    bottom,
    feather, // on the inner ellipse, where the weight begins to fall
    rotate,  // outside the ellipse's right end; or beside the gradient's line
};

inline constexpr double handleReachPoints = 12; // hit areas are twice this, at least 18 across
inline constexpr double rotateReachPoints = 30; // how far outside the ellipse rotation is caught

struct MaskHandlePoint {
    MaskHandle handle = MaskHandle::move;
    Point at; // view points
    bool operator==(const MaskHandlePoint&) const = default;
};

// In drawing order; none for brushes.
std::vector<MaskHandlePoint> maskHandles(const MaskComponent& shape, const PhotoPlacement& place);

// The nearest handle within reach; inside an ellipse, or on a gradient's line, `move`; just outside
// an ellipse `rotate`.
std::optional<MaskHandle> maskHandleAt(Point viewPoint, const MaskComponent& shape,
                                       const PhotoPlacement& place);

// The shape as it was when the drag began, dragged from one view point to another. `even` keeps an
// ellipse's shape while its axes change, and turns in steps of 15 degrees.
MaskComponent draggedShape(const MaskComponent& start, MaskHandle handle, Point from, Point to,
                           const PhotoPlacement& place, bool even = false);

// A new shape drawn from where the pointer went down to where it is: a gradient from one to the
// other, an ellipse around the first. None while the way is too short to be meant.
std::optional<MaskComponent> drawnShape(MaskComponent shape, Point from, Point to,
                                        const PhotoPlacement& place);

// Points along the ellipse's outline (`share` 1) or its inner edge, in view points, closed.
std::vector<Point> ellipseOutline(const MaskComponent& shape, double share,
                                  const PhotoPlacement& place, int count = 72);
// The share of the radius at which the weight begins to fall.
double innerShare(const MaskComponent& shape);

} // namespace kelvaro
