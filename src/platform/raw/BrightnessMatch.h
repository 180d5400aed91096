// How many stops a camera meant its RAW data to be brightened, where the file does not say so: the
// mid-tones of the embedded preview against those of the sensor.
#pragma once

#include "platform/ImageFiles.h"
#include "platform/raw/SensorImage.h"

#include <optional>
#include <vector>

namespace kelvaro {

// Linear luminance of a preview, one value for about every 64th pixel, unsorted.
std::vector<float> previewLuminance(const DecodedBitmap& preview);
// The same of the sensor at its as-shot white without any exposure correction; at most 128 rows are
// read.
std::vector<float> sensorLuminance(const SensorImage& sensor);

// The median difference, in stops, of equal quantiles between the second and the eighth tenth that
// lie in the preview's mid-tones, within ±1.5. None with fewer than four of them.
std::optional<double> matchedStops(std::vector<float> preview, std::vector<float> sensor);

} // namespace kelvaro
