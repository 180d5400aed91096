// HEIC files as phones write them: the picture lies as the sensor saw it, a transformation of the
// container turns it upright, and the EXIF data is an item of its own.
#pragma once

#include "platform/Bitmap.h"

#include <cstdint>
#include <filesystem>
#include <span>

namespace kelvaro::samples {

// `pixels` are u8, 3 channels, sRGB, as stored; `orientation` is 1, 3, 6 or 8; `exif` is a TIFF
// structure. Throws std::runtime_error.
void writeHeic(const std::filesystem::path& file, const Bitmap& pixels, int orientation,
               std::span<const std::uint8_t> exif);

} // namespace kelvaro::samples
