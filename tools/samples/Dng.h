// Camera RAW files in the DNG 1.4 form: a JPEG preview first, the uncompressed colour filter array
// in a sub-directory, and what a RAW engine must know of the sensor.
#pragma once

#include "samples/Sensor.h"

#include <filesystem>

namespace kelvaro::samples {

// `preview` is u8, 3 channels, sRGB, in the same orientation as the mosaic. The EXIF data is not
// part of it. Throws std::runtime_error.
void writeDng(const std::filesystem::path& file, const Mosaic& mosaic, const SensorModel& sensor,
              const Bitmap& preview, const PhotoRecord& record);

} // namespace kelvaro::samples
