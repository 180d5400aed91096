// A Bayer sensor's picture at a quarter of its size, one pixel of 4 × 4 photosites, for what needs
// no more of a photo: its thumbnail, and the measurement of its tones. Scene-linear Rec. 709,
// saturated channels rebuilt, neither sharpened nor freed of noise, which means of 16 hardly show.
#pragma once

#include "base/Cancellation.h"
#include "platform/Raster.h"
#include "platform/raw/SensorImage.h"

#include <optional>

namespace kelvaro {

// Not where a lens correction moves pixels or the pixels are not square.
bool isBinnable(const SensorImage& sensor);

// The whole picture, upright; none when cancelled. On all cores, the same bits with any number of
// them. Throws std::bad_alloc.
std::optional<Raster> binnedPicture(const SensorImage& sensor, const Cancellation* cancellation);

} // namespace kelvaro
