// Text in seven-segment digits as a camera's date back exposes it: thin slanted strokes with
// pointed ends and narrow gaps. A pure function, any thread.
#pragma once

#include "platform/PixelMemory.h"

#include <string_view>
#include <vector>

namespace kelvaro {

// How much of each pixel the text covers, 0 … 1; rows top-down.
struct Coverage {
    int width = 0, height = 0;
    std::vector<float> values;
    float at(int x, int y) const {
        return values[std::size_t(y) * std::size_t(width) + std::size_t(x)];
    }
};

// The width of a digit's cell and of the point's, in digit heights.
inline constexpr double kDigitCell = 0.52, kPointCell = 0.26;
// Room on every side of the text, in digit heights; the slant stays inside.
inline constexpr double kTextPadding = 0.2;

// Digits and points `digitHeightPx` high, padded on all sides; other characters leave their cell
// empty. Edges are exact: a pixel's value is the area of its part inside the strokes.
Coverage segmentText(std::string_view text, double digitHeightPx);

} // namespace kelvaro
