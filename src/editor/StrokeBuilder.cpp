#include "editor/StrokeBuilder.h"

#include "develop/BrushPainting.h"

#include <cmath>

namespace kelvaro {
namespace {

bool isUsable(MaskPoint p) {
    return std::isfinite(p.x) && std::isfinite(p.y);
}

// Inside what a mask can store.
MaskPoint limited(MaskPoint p) {
    return {std::clamp(p.x, -4.0, 5.0), std::clamp(p.y, -4.0, 5.0)};
}

} // namespace

void StrokeBuilder::startStroke(MaskComponent& shape, MaskPoint at, double flow) {
    BrushStroke stroke;
    stroke.points.push_back(at);
    stroke.radius = brush_.radius;
    stroke.feather = brush_.feather;
    stroke.flow = flow;
    stroke.erase = brush_.erases();
    shape.strokes.push_back(std::move(stroke));
    flow_ = flow;
    last_ = at;
}

// A device that never sends a pressure paints fully; a pen that is being lifted sends 0 at last.
double StrokeBuilder::flowAt(double pressure) {
    pressureSeen_ = pressureSeen_ || pressure > 0;
    const bool isLifted = pressureSeen_ && !(pressure > 0);
    return flowAtPressure(brush_, isLifted ? BrushTool::leastPressure : pressure, hasPressure_);
}

bool StrokeBuilder::begin(MaskComponent& shape, MaskPoint at, double pressure) {
    if (!isUsable(at)) return false;
    pressureSeen_ = false;
    startStroke(shape, limited(at), flowAt(pressure));
    return true;
}

bool StrokeBuilder::beginFromLast(MaskComponent& shape, MaskPoint at, double pressure) {
    if (!isUsable(at)) return false;
    if (shape.strokes.empty() || shape.strokes.back().points.empty()) {
        return begin(shape, at, pressure);
    }
    const MaskPoint from = shape.strokes.back().points.back();
    pressureSeen_ = false;
    startStroke(shape, from, flowAt(pressure));
    add(shape, at, pressure);
    return true;
}

bool StrokeBuilder::add(MaskComponent& shape, MaskPoint at, double pressure) {
    if (!isUsable(at) || shape.strokes.empty()) return false;
    const MaskPoint to = limited(at);
    const double step = std::hypot(to.x - last_.x, to.y - last_.y) * kBrushRasterLongerSide;
    // A large brush needs no points that lie much closer than its dabs.
    const double spacing = brush_.radius * kBrushRasterLongerSide * 0.25;
    if (step < std::max(leastStepPx, spacing / 4)) return false;
    const double flow = flowAt(pressure);
    const bool isFull = shape.strokes.back().points.size() >= mostPoints;
    if (isFull || std::abs(flow - flow_) >= flowStep) startStroke(shape, last_, flow);
    shape.strokes.back().points.push_back(to);
    last_ = to;
    return true;
}

} // namespace kelvaro
