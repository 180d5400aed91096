#include "editor/Straightening.h"

#include "editor/CropRules.h"
#include "editor/TypedNumber.h"

#include <cmath>
#include <numbers>

namespace kelvaro {

Adjustments straightenedTo(const Adjustments& base, double degrees, PixelSize photo) {
    Adjustments turned = base;
    turned.straighten = std::clamp(degrees, -mostStraightenDegrees, mostStraightenDegrees);
    const Box crop = cropBox(base, photo);
    const Box fitted = shrunkToFit(crop, photo, turnOf(turned));
    return fitted == crop ? turned : withCropBox(turned, fitted, photo);
}

std::optional<double> straightenFromText(std::string_view text) {
    return typedNumber(text, "°");
}

std::optional<double> straightenFromLine(Point from, Point to) {
    const double dx = to.x - from.x, dy = to.y - from.y;
    if (!(std::hypot(dx, dy) > 0)) return std::nullopt;
    // Counter-clockwise from level, brought to −45 … 45: beyond that the line is an upright.
    const double degrees = std::atan2(dy, dx) * 180 / std::numbers::pi;
    return std::remainder(degrees, 90);
}

} // namespace kelvaro
