// Where each pixel of the developed picture lies in the one that the sensor drew: square pixels
// from those that are not, and the lens corrections of a DNG. Both pictures are counted in pixels
// of the given reduction from the crop's upper-left corner, rows downwards, pixel centres at whole
// numbers, before orientation. Any number of threads.
#pragma once

#include "base/Geometry.h"
#include "platform/raw/DngOpcodes.h"
#include "platform/raw/SensorImage.h"

#include <vector>

namespace kelvaro {

// Of the developed picture before orientation.
PixelSize pictureSize(const SensorImage& sensor, int reduction);

class PlaceMap {
public:
    // Corrections that are not finite, or shrink some part to less than half or enlarge it more
    // than twenty times, are left out.
    PlaceMap(const SensorImage& sensor, int reduction);

    // Nothing to do: both pictures are the same.
    bool isIdentity() const { return warps_.empty() && rowScale_ == 1 && columnScale_ == 1; }
    // Whether all channels come from the same places.
    bool isShared() const;
    // The places of `count` pixels of a row in one channel's picture. Between every eighth column
    // they are interpolated, which is exact to a hundredth of a pixel.
    void row(int row, int column, int count, int channel, float* rows, float* columns) const;
    // All that sampling a tile in any channel needs, and never much more than twice the tile.
    SensorRect source(const SensorRect& tile) const;

private:
    struct Place {
        double row, column;
    };
    Place at(double row, double column, int channel) const;
    Place warped(const LensWarp& warp, Place place, int channel) const;
    bool isSane() const;

    double rowScale_ = 1, columnScale_ = 1; // of the developed picture
    double top_, left_;                     // of the crop in the active area
    double height_, width_;                 // of the active area
    int channels_, reduction_;
    PixelSize size_;
    std::vector<LensWarp> warps_;
};

// Planes of pixels side by side: where they begin, how many floats a row has, and which pixels they
// hold.
struct SourcePlanes {
    const float* first[kMaximumChannels] = {};
    int count = 0;
    std::ptrdiff_t stride = 0;
    SensorRect area;
};

// `count` values of each plane at places inside it, by Catmull-Rom splines. Places nearer than two
// pixels to its edges are moved inwards.
void sampleRow(const SourcePlanes& planes, const float* rows, const float* columns, int count,
               float* const* out);

} // namespace kelvaro
