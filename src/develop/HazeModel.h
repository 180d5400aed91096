// How much veil lies where: the dark channel prior (He, Sun and Tang, "Single Image Haze Removal
// Using Dark Channel Prior", CVPR 2009) gives the airlight and a coarse depth, and a guided filter
// (the same authors, "Guided Image Filtering", ECCV 2010) turns the depth into coefficients over
// the brightness, so that it follows edges at any size. Linear light; pure functions, any thread.
#pragma once

#include "develop/ToneMaps.h"
#include "platform/Raster.h"

#include <array>
#include <optional>

namespace kelvaro {

// The airlight with its largest channel 1, as bitmaps take it. A NaN channel is ignored when the
// largest is sought; none where no channel is positive.
std::optional<std::array<double, 3>> normalisedAirlight(const std::array<double, 3>& airlight);

// The mean colour of the pixels whose dark channel is among the brightest 0.1% (at least one
// pixel). None for an empty image, or where no channel of it is positive.
std::optional<std::array<double, 3>> measuredAirlight(const ConstTileView& small);

// Per pixel (slope, offset, cap) of depth = clamp(min(slope × g + offset, cap), 0, 1), where g is
// the mean over the channels of pixel / airlight, at most 1.5: fitted to the dark channel of pixel
// / airlight. The result has the extent of `small`, which must not be empty.
Raster fittedHazeMap(const ConstTileView& small, const std::array<double, 3>& airlight);

} // namespace kelvaro
