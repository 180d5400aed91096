// How a crop may lie on a photo that is turned under it: boxes in photo pixels, y up, and the
// recipe's fractions. `turn` is in radians, counter-clockwise, about the photo's centre. Pure
// functions, any thread.
#pragma once

#include "editor/Box.h"
#include "recipe/Adjustments.h"

namespace kelvaro {

inline constexpr double fitTolerancePx = 0.5;   // how far a crop may stand out of the photo
inline constexpr double fractionSnap = 0.0005;  // smaller crop fractions are stored as 0
inline constexpr double largestFraction = 0.98; // and none is larger
inline constexpr double leastCropShare = 0.03;  // of the longer side: what resizing leaves
inline constexpr double mostStraightenDegrees = 45;
inline constexpr int fitBisections = 20;

double turnOf(const Adjustments& edit);
Box cropBox(const Adjustments& edit, PixelSize photo);
// The edit with the box as its crop; straighten stays.
Adjustments withCropBox(Adjustments edit, const Box& box, PixelSize photo);

// Whether the box lies inside the turned photo, half a pixel of tolerance on every side.
bool fitsTurned(const Box& box, PixelSize photo, double turn);

// `requested` where it fits (and is large enough to be stored), else as far on the way there from
// `start` as does: `start` itself
// where nothing beyond it does.
Box fittedTowards(const Box& start, const Box& requested, PixelSize photo, double turn);

// The box shrunk about its centre, its shape kept, until it fits. Where that would leave next to
// nothing, because the centre itself lies off the turned photo, it is moved inwards as well.
Box shrunkToFit(const Box& box, PixelSize photo, double turn);

// The largest box of a ratio (width ÷ height) around `centre` inside the photo, then shrunk to fit.
Box largestBox(double ratio, Point centre, PixelSize photo, double turn);

} // namespace kelvaro
