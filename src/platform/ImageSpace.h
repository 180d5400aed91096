// The one place that turns image space (y upwards) into storage order (row 0 on top) and back.
#pragma once

#include "base/Geometry.h"

namespace kelvaro {

// The storage row, counted from the top, of the pixel line y (its lower edge) of image space.
inline int rowOfLine(const PixelRect& stored, int y) {
    return stored.top() - 1 - y;
}
// The pixel line of image space that storage row `row` holds.
inline int lineOfRow(const PixelRect& stored, int row) {
    return stored.top() - 1 - row;
}
// The image-space y of the centres of storage row `row`.
inline double centreOfRow(const PixelRect& stored, int row) {
    return double(lineOfRow(stored, row)) + 0.5;
}

} // namespace kelvaro
