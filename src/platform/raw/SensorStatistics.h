// What the samples themselves tell before they are developed.
#pragma once

#include "platform/raw/MosaicReader.h"
#include "platform/raw/SensorImage.h"

#include <array>
#include <cstdint>
#include <vector>

namespace kelvaro {

// Histograms of integer samples by channel over a quarter of the active rows. Empty for float
// samples.
struct SensorStatistics {
    std::array<std::vector<std::uint32_t>, 3> histograms;
    std::array<std::uint64_t, 3> counts{};
};

SensorStatistics measure(const SensorImage& sensor);

// Where each channel really saturates: the highest sample, when so many photosites share it that
// they must have been cut off there, and the recorded white level otherwise. Cameras often stop a
// little below it, and a channel that is not known to be cut off would tint blown areas.
std::array<float, kMaximumChannels> saturationLevels(const SensorImage& sensor,
                                                     const SensorStatistics& statistics);

// SensorImage::greenRatio as it is in the smooth mid-tones of a Bayer sensor: the median over
// quads, and 1 where the greens agree to half a percent, differ by more than a tenth, or too few
// can be compared. `sensor` has none yet.
float greenRatio(const SensorImage& sensor, const MosaicReader& reader);

// Standard deviation of the noise in the darker half, in balanced values, of the noisiest channel:
// from second differences of neighbours of one colour on a few rows. At most 0.1.
float darkNoise(const SensorImage& sensor, const MosaicReader& reader);

} // namespace kelvaro
