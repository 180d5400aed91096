// What a crop becomes when one of its handles is dragged: pure functions on boxes in photo pixels,
// y up. `travel` is the pointer's way since the drag began, in photo pixels.
#pragma once

#include "editor/CropHandles.h"
#include "editor/CropRules.h"

namespace kelvaro {

// The box that the pointer asks for, before it is fitted into the turned photo. `ratio` is width ÷
// height, or none. Any handle but rotate.
Box requestedCrop(CropHandle handle, const Box& start, Point travel, std::optional<double> ratio,
                  PixelSize photo);

// The same, fitted.
Box draggedCrop(CropHandle handle, const Box& start, Point travel, std::optional<double> ratio,
                PixelSize photo, double turn);

// The angle after the pointer went around the crop's centre from one bearing to another (radians,
// −π … π as atan2 has them), −45 … 45 degrees.
double draggedStraighten(double startDegrees, double startBearing, double bearing);

} // namespace kelvaro
