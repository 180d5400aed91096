// Puts tiles of the sensor's picture where they belong in the upright one.
#pragma once

#include "platform/Raster.h"
#include "platform/raw/SensorImage.h"

namespace kelvaro {

// Where a rectangle of the stored picture lies in the upright one of the given size, in image
// space. `orientation` is EXIF's 1 … 8.
PixelRect uprightRect(const SensorRect& stored, PixelSize upright, int orientation);

class UprightWriter {
public:
    // The target is a part of the upright picture of the size `whole`.
    UprightWriter(const TileView& target, PixelSize whole, int orientation);
    // The place of a tile's upper-left pixel in a plane of the target, for pictures that are stored
    // upright; null for others.
    float* place(const SensorRect& tile, int plane) const;
    std::ptrdiff_t stride() const { return target_.stride; }
    // Three planes whose first value is the tile's upper-left pixel. Tiles may be written at the
    // same time when they do not overlap.
    void write(const SensorRect& tile, const float* const (&planes)[3],
               std::ptrdiff_t stride) const;

private:
    TileView target_;
    PixelSize whole_;
    int left_, top_;                                   // of the target in the whole
    bool isTransposed_, mirrorsRows_, mirrorsColumns_; // after transposing
};

} // namespace kelvaro
