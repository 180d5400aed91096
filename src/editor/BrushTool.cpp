#include "editor/BrushTool.h"

#include <cmath>

namespace kelvaro {

BrushTool resized(BrushTool brush, int steps) {
    brush.radius = std::clamp(brush.radius * std::pow(BrushTool::sizeFactor, steps),
                              BrushTool::leastRadius, BrushTool::mostRadius);
    return brush;
}

BrushTool softened(BrushTool brush, int steps) {
    brush.feather = std::clamp(brush.feather + 10 * steps, 0.0, 100.0);
    return brush;
}

BrushTool withFlow(BrushTool brush, double percent) {
    if (std::isfinite(percent)) brush.flow = std::clamp(percent, 1.0, 100.0);
    return brush;
}

double flowAtPressure(const BrushTool& brush, double pressure, bool hasPressure) {
    if (!hasPressure || !(pressure > 0) || !std::isfinite(pressure)) return brush.flow;
    return brush.flow * std::clamp(pressure, BrushTool::leastPressure, 1.0);
}

BrushCursor brushCursor(const BrushTool& brush, double pointsPerMaskUnit) {
    const double outer = brush.radius * pointsPerMaskUnit;
    return {outer, outer * (1 - std::clamp(brush.feather / 100, 0.0, 1.0)), brush.erases()};
}

} // namespace kelvaro
