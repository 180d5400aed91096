// Reads the property dictionaries of photo files with Exiv2. All exceptions of the library end here
// and it prints nothing.
//
// Sizes: JPEG, PNG and TIFF give the size of their main picture, HEIF the one of its primary item
// before rotation. For a RAW file it is the part of the sensor that the camera or the DNG calls the
// picture: DefaultCropSize of a DNG, else PixelXDimension where it lies within a tenth of the
// stored mosaic, else the mosaic. HEIF orientation is the container's (irot, imir), never EXIF's,
// which repeats it.
#pragma once

#include "platform/PhotoProperties.h"

namespace kelvaro {

class ExifPropertyReader final : public PropertyReader {
public:
    ExifPropertyReader(); // starts the library's XMP part once per process
    // Failures: notFound, unreadable, malformed (empty). Content that cannot be understood gives
    // empty dictionaries.
    Result<PhotoProperties> read(const std::filesystem::path& path) override;
    PhotoColour readColour(const std::filesystem::path& path) override;
};

} // namespace kelvaro
