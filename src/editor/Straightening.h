// Straightening by a number and by a line along a horizon. Degrees; positive turns the picture
// clockwise. Pure functions.
#pragma once

#include "editor/Box.h"
#include "recipe/Adjustments.h"

#include <optional>
#include <string_view>

namespace kelvaro {

// The edit turned to `degrees` (−45 … 45, clamped) with a crop that fits: the one of `base` where
// it does, else shrunk.
Adjustments straightenedTo(const Adjustments& base, double degrees, PixelSize photo);

// "3", "-2.5", "+1,5°", also "−2"; none when it is no finite number.
std::optional<double> straightenFromText(std::string_view text);

// The angle that makes a line drawn over the photo level, or upright where it is nearer to that.
// Both points in photo pixels, y up, before straightening. None for a line of no length.
std::optional<double> straightenFromLine(Point from, Point to);

} // namespace kelvaro
