// What the decoder hands to the development: the sensor's samples as stored and everything needed
// to read them. Coordinates count stored photosites from the top-left corner, rows downwards.
#pragma once

#include "platform/raw/CameraColour.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace kelvaro {

struct SensorRect {
    int left = 0, top = 0, width = 0, height = 0;

    int right() const { return left + width; }
    int bottom() const { return top + height; }
    bool isEmpty() const { return width <= 0 || height <= 0; }
    bool contains(const SensorRect& other) const {
        return other.left >= left && other.top >= top && other.right() <= right() &&
               other.bottom() <= bottom();
    }
    bool operator==(const SensorRect&) const = default;
};

// The scales of rows and columns that make pixels square which are `aspect` times as wide as high;
// both 1 where that is nonsense or next to nothing.
struct SquaringScales {
    double row = 1, column = 1;
};
SquaringScales squaringScales(double aspect);

inline SensorRect intersection(const SensorRect& a, const SensorRect& b) {
    const int left = std::max(a.left, b.left), top = std::max(a.top, b.top);
    return {left, top, std::min(a.right(), b.right()) - left,
            std::min(a.bottom(), b.bottom()) - top};
}

enum class SensorLayout {
    bayer,      // one sample per photosite, 2 × 2 pattern of red, green, blue
    xTrans,     // one sample per photosite, 6 × 6 pattern of red, green, blue
    monochrome, // one sample per photosite, no filters
    fullColour, // all channels at every photosite
};

// Channel (0 red, 1 green, 2 blue) of each photosite, repeating from stored (0, 0).
struct ColourFilters {
    int period = 2;
    std::array<std::uint8_t, 36> channels{};
    int at(int row, int column) const {
        return channels[std::size_t((row % period) * period + column % period)];
    }
};

// Black levels: a table that repeats from (originTop, originLeft), with the channels of one
// photosite side by side, and what is added per row and per column from that origin (empty:
// nothing).
struct BlackLevels {
    int rows = 1, columns = 1, channels = 1;
    int originTop = 0, originLeft = 0;
    std::vector<float> table{0.0f};
    std::vector<float> rowDeltas, columnDeltas;
    float at(int row, int column, int channel) const;
};

struct OpcodeCorrections;
struct PictureMeasure;

struct SensorImage {
    SensorLayout layout = SensorLayout::bayer;
    int width = 0, height = 0;
    int colours = 3;  // that the camera tells apart: 1, 3 or 4
    int channels = 1; // samples per photosite, interleaved; those past the third colour are unused
    std::ptrdiff_t stride = 0;               // samples from one row to the next
    const std::uint16_t* integers = nullptr; // one of the two; owned by the decoder
    const float* floats = nullptr;

    SensorRect active; // photosites that saw light
    SensorRect crop;   // the picture, inside active
    // How much longer the picture becomes for its pixels to be square; one of them is 1.
    double rowScale = 1, columnScale = 1;
    ColourFilters filters;
    BlackLevels black;
    std::array<float, kMaximumChannels> white{1, 1, 1, 1}; // samples at which the channels saturate
    CameraColour colour;
    // How much more the greens in rows of red see than those in rows of blue; both are brought to
    // their mean. Bayer sensors only.
    float greenRatio = 1;
    // Balanced values at which the channels of a saturated photosite stand.
    std::array<float, kMaximumChannels> saturation{1, 1, 1, 1};
    const OpcodeCorrections* corrections = nullptr; // of a DNG; owned by the decoder
    bool isReduced = false;                         // already at half size
    int orientation = 1;                            // EXIF
    double exposureStops = 0;                       // baseline exposure
    double sensitivity = 0;                         // ISO; 0: not known
    // Of these samples, shared by their developments; each measures for itself where it is null.
    std::shared_ptr<PictureMeasure> measure;
};

} // namespace kelvaro
