// The picture as the sensor drew it, in balanced camera values: any rectangle of it demosaiced,
// with saturated channels rebuilt and gains applied, at full or half size. Coordinates are pixels
// of that size from the crop's upper-left corner, rows downwards, before orientation and lens
// corrections. What concerns the whole picture is measured by the constructor; any number of
// threads afterwards, each with its own workshop.
#pragma once

#include "platform/raw/Demosaic.h"
#include "platform/raw/Finishing.h"
#include "platform/raw/Highlights.h"
#include "platform/raw/LocalColour.h"
#include "platform/raw/MosaicGains.h"
#include "platform/raw/MosaicReader.h"
#include "platform/raw/XTransDemosaic.h"

#include <memory>
#include <optional>
#include <vector>

namespace kelvaro {

// What one thread needs for one tile.
struct Workshop {
    static constexpr int kWidth = BayerDemosaic::kMaximumWidth, kHeight = 288; // of a tile
    static constexpr int kStride = kWidth + 64; // room for the last vector of a row

    Workshop();
    std::vector<float> planes[kMaximumChannels + 1]; // channels, then rows of the mosaic
    float* row(int channel, int y) { return planes[channel].data() + y * kStride; }
    BayerDemosaic demosaic;
    Finishing finishing;
    std::optional<XTransDemosaic> xTrans;        // made when first needed
    std::vector<float> wide[4];                  // its mosaic and planes
    std::vector<float> source[kMaximumChannels]; // of lens corrections
};

class CameraPicture {
public:
    // `reduction` is 1 or 2.
    CameraPicture(const SensorImage& sensor, int reduction);
    CameraPicture(const CameraPicture&) = delete;
    CameraPicture& operator=(const CameraPicture&) = delete;

    const SensorImage& sensor() const { return sensor_; }
    int reduction() const { return reduction_; }
    float toe() const { return toe_; } // of the compressive domain, in balanced values

    // The sensor's channels of a rectangle that fits the workshop, into its rows. It may reach over
    // the picture's edge.
    void make(const SensorRect& tile, Workshop& shop) const;
    // Means over `count` squares of `side` pixels, of which the first begins at (side × row, 0).
    // Only for sensors of three colours.
    void means(int row, int side, int count, float* const (&rows)[3]) const;

private:
    void bayerMeans(int top, int photosites, int count, float* const (&rows)[3]) const;
    void otherMeans(int top, int photosites, int count, float* const (&rows)[3]) const;
    void multiply(int row, int column, int step, int count, float* const* rows) const;
    void demosaic(const SensorRect& tile, Workshop& shop) const;
    void demosaicXTrans(const SensorRect& tile, Workshop& shop) const;
    void halve(const SensorRect& tile, Workshop& shop) const;
    void read(const SensorRect& tile, Workshop& shop) const;

    const SensorImage sensor_;
    const int reduction_;
    MosaicReader reader_;
    float toe_;
    std::unique_ptr<const LocalColour> surroundings_;
    HighlightRecovery highlights_;
    std::optional<RecoveredMosaic> recovered_;
    std::optional<PlaceGains> gains_;
    std::optional<GainedMosaic> gained_;
    const SplitRows* mosaic_; // the last of these that there is
};

} // namespace kelvaro
