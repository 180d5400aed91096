// The white balance that a camera used where the file does not say it: what turns our colours into
// those of the embedded preview.
#pragma once

#include "platform/ImageFiles.h"
#include "platform/Raster.h"
#include "platform/raw/CameraColour.h"

#include <optional>

namespace kelvaro {

// `developed` is the upright picture, linear Rec. 709 made with `colour`. Compares the mid-tones of
// both over a grid of cells and answers with the camera values of the preview's white; the median
// of the cells, so that saturated colours, which cameras like to change, decide little. None for
// other than three channels, and without enough mid-tones.
std::optional<ChannelValues> matchedNeutral(const Raster& developed, const CameraColour& colour,
                                            const DecodedBitmap& preview);

} // namespace kelvaro
