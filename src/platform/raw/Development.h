// From a sensor's samples to scene-linear Rec. 709: black and white level, balance, demosaic,
// highlights, camera matrix, crop and orientation. Float throughout; values below 0 and above 1 are
// kept.
#pragma once

#include "base/Cancellation.h"
#include "platform/Raster.h"
#include "platform/RawEngine.h"
#include "platform/raw/SensorImage.h"

#include <optional>

namespace kelvaro {

// What the engine calls its default sharpening; settings move it between none and three times as
// much.
inline constexpr double kDefaultSharpness = 50;

// Size of the upright picture; reduction 2 makes one pixel of 2 × 2 photosites.
PixelSize developedSize(const SensorImage& sensor, int reduction);

// The picture with its lower-left corner at (0, 0), opaque; none when cancelled. Runs on all cores
// and gives the same bits with any number of them. Throws std::bad_alloc.
std::optional<Raster> develop(const SensorImage& sensor, const RawDevelopSettings& settings,
                              const Cancellation* cancellation);

} // namespace kelvaro
