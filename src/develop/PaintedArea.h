// Where a picture changes while somebody paints: between two recipes that differ by brush strokes
// alone. Photo pixels at full resolution, origin at the lower-left corner. Pure functions.
#pragma once

#include "base/Geometry.h"
#include "recipe/Adjustments.h"

#include <optional>

namespace kelvaro {

// The part of the photo outside of which `after` looks as `before` did, empty where nothing
// changed; none where something else than going on to paint sets them apart. Before the picture
// is resampled: who does that adds what the filter reaches.
std::optional<PixelRect> paintedArea(const Adjustments& before, const Adjustments& after,
                                     PixelSize photo);

} // namespace kelvaro
