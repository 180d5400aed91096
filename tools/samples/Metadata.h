// The EXIF data of a sample photo, and how it gets into the file. Exceptions of Exiv2 pass through.
#pragma once

#include "samples/Records.h"

#include <exiv2/exiv2.hpp>

#include <filesystem>

namespace kelvaro::samples {

// `storedSize` is the size of the pixels as the file holds them.
Exiv2::ExifData exifOf(const PhotoRecord& record, PixelSize storedSize);

// Adds the data to what the DNG, JPEG, PNG or TIFF file holds already.
void writeExif(const std::filesystem::path& file, const Exiv2::ExifData& exif);

} // namespace kelvaro::samples
