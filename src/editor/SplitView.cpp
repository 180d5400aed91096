#include "editor/SplitView.h"

#include <cmath>

namespace kelvaro {

SplitAreas splitAreas(const SplitView& split, const Box& visible) {
    SplitAreas areas;
    const double share =
        split.originalHeld ? 1 : (split.isSplit ? std::clamp(split.share, 0.0, 1.0) : 0);
    areas.lineX = visible.minX() + share * visible.width;
    areas.before = Box::between(visible.minX(), visible.minY(), areas.lineX, visible.maxY());
    areas.after = Box::between(areas.lineX, visible.minY(), visible.maxX(), visible.maxY());
    return areas;
}

bool hitsSplitLine(const SplitView& split, const Box& visible, Point p) {
    return split.isSplit && !split.originalHeld && p.y >= visible.minY() && p.y <= visible.maxY() &&
           std::abs(p.x - splitAreas(split, visible).lineX) <= SplitView::gripReachPoints;
}

SplitView withSplitAt(SplitView split, const Box& visible, double viewX) {
    if (!(visible.width > 0)) return split;
    split.share = std::clamp((viewX - visible.minX()) / visible.width, 0.0, 1.0);
    return split;
}

} // namespace kelvaro
