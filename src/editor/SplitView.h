// Comparing with the photo as it was: the original while a key is held, or a split that the hand
// drags across the canvas. Plain values, view points with y down.
#pragma once

#include "editor/Box.h"

namespace kelvaro {

struct SplitView {
    static constexpr double gripReachPoints = 10;
    static constexpr double labelSeconds = 1; // how long "Before" and "After" stay

    bool originalHeld = false; // the key is down: all is as it was, whatever else is set
    bool isSplit = false;
    double share = 0.5; // of the visible picture that lies to the left of the line

    bool operator==(const SplitView&) const = default;
};

// What the views of the two states cover of the visible picture.
struct SplitAreas {
    Box before, after;
    double lineX = 0;
};

// `visible` is the part of the picture that can be seen.
SplitAreas splitAreas(const SplitView& split, const Box& visible);
bool hitsSplitLine(const SplitView& split, const Box& visible, Point viewPoint);
SplitView withSplitAt(SplitView split, const Box& visible, double viewX);

} // namespace kelvaro
