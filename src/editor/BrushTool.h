// The brush in the user's hand: its size, softness and strength, whether it erases, and what keys
// and a tablet's pressure do to it. Plain value.
#pragma once

#include "editor/Box.h"
#include "recipe/LocalMask.h"

#include <string_view>

namespace kelvaro {

struct BrushTool {
    static constexpr double leastRadius = 0.001, mostRadius = 0.5; // shares of the longer side
    static constexpr double sizeFactor = 1.1224620483;             // six steps double the size
    static constexpr double leastPressure = 0.05;

    double radius = 0.05;
    double feather = 50; // percent
    double flow = 100;   // percent
    bool erase = false;
    bool optionHeld = false; // ⌥: the other one of painting and erasing

    bool operator==(const BrushTool&) const = default;

    bool erases() const { return erase != optionHeld; }
};

namespace texts {
inline constexpr std::string_view brushEraseTip =
    "Hold ⌥ while painting for the other one (E switches)";
} // namespace texts

// ] and [: positive steps make it larger.
BrushTool resized(BrushTool brush, int steps);
// Shift with [ and ]: softness, ten percent a step.
BrushTool softened(BrushTool brush, int steps);
BrushTool withFlow(BrushTool brush, double percent);

// The flow of a stroke begun with this pressure. A device that sends 0 while it touches, or no
// number, has no pressure to tell: the brush works as it is set.
double flowAtPressure(const BrushTool& brush, double pressure, bool hasPressure);

// What the cursor shows, in view points: the edge, and the circle inside which the dab is whole.
struct BrushCursor {
    double outer = 0, inner = 0;
    bool erases = false;
    bool operator==(const BrushCursor&) const = default;
};
BrushCursor brushCursor(const BrushTool& brush, double pointsPerMaskUnit);

} // namespace kelvaro
