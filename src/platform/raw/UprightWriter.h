// Puts tiles of the sensor's picture where they belong in the upright raster.
#pragma once

#include "platform/Raster.h"
#include "platform/raw/SensorImage.h"

namespace kelvaro {

class UprightWriter {
public:
    // `orientation` is EXIF's 1 … 8; the raster has the upright size.
    UprightWriter(Raster& target, int orientation);
    // Three planes whose first value is the tile's upper-left pixel. Tiles may be written at the
    // same time when they do not overlap.
    void write(const SensorRect& tile, const float* const (&planes)[3],
               std::ptrdiff_t stride) const;

private:
    TileView target_;
    bool isTransposed_, mirrorsRows_, mirrorsColumns_; // after transposing
};

} // namespace kelvaro
