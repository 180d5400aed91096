// What of a crop a pointer takes hold of. Upright view points: y up.
#pragma once

#include "editor/Box.h"

#include <optional>

namespace kelvaro {

enum class CropHandle {
    move,
    left,
    right,
    top, // the maxY edge
    bottom,
    topLeft,
    topRight,
    bottomLeft,
    bottomRight,
    rotate, // outside
};

inline constexpr double cornerReachPoints = 18, edgeReachPoints = 10;

// None where no crop can be drawn. Bounds are inclusive, the first rule that matches decides:
// corners, vertical edges, horizontal edges, inside, outside.
std::optional<CropHandle> cropHandleAt(Point pointer, const std::optional<Box>& drawn);

bool carriesLeft(CropHandle handle);
bool carriesRight(CropHandle handle);
bool carriesTop(CropHandle handle);
bool carriesBottom(CropHandle handle);
bool isCorner(CropHandle handle);

} // namespace kelvaro
