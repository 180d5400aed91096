// The picture as the sensor drew it, in balanced camera values: any rectangle of it demosaiced,
// with saturated channels rebuilt and gains applied, at full or half size. Coordinates are pixels
// of that size from the crop's upper-left corner, rows downwards, before orientation and lens
// corrections. What concerns the whole picture is measured by the constructor; any number of
// threads afterwards, each with its own workshop.
#pragma once

#include "platform/raw/Highlights.h"
#include "platform/raw/LocalColour.h"
#include "platform/raw/MosaicGains.h"
#include "platform/raw/MosaicReader.h"
#include "platform/raw/Workshop.h"

#include <functional>
#include <memory>
#include <optional>

namespace kelvaro {

class CameraPicture {
public:
    // `reduction` is 1 or 2.
    CameraPicture(const SensorImage& sensor, int reduction);
    CameraPicture(const CameraPicture&) = delete;
    CameraPicture& operator=(const CameraPicture&) = delete;

    const SensorImage& sensor() const { return sensor_; }
    int reduction() const { return reduction_; }
    // Whether two of three colours of a pixel come from its neighbours.
    bool interpolates() const {
        return reduction_ == 1 &&
               (sensor_.layout == SensorLayout::bayer || sensor_.layout == SensorLayout::xTrans);
    }
    float toe() const { return toe_; } // of the compressive domain, in balanced values

    // The sensor's channels of a rectangle that fits the workshop, into its rows. It may reach over
    // the picture's edge.
    void make(const SensorRect& tile, Workshop& shop) const;
    // Whether the rows of a rectangle can also be had one by one, each before the next is made.
    bool makesRows() const { return sensor_.layout == SensorLayout::bayer && reduction_ == 1; }
    // Red, green and blue of each row in turn, the same memory for all. `goesOn` tells that the
    // workshop made the rows above these last.
    using UseRow = std::function<void(int row, float* red, float* green, float* blue)>;
    void makeRows(const SensorRect& tile, bool goesOn, Workshop& shop, const UseRow& use) const;
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
    std::shared_ptr<const PictureMeasure> measure_;
    float toe_;
    HighlightRecovery highlights_;
    std::optional<RecoveredMosaic> recovered_;
    std::optional<PlaceGains> gains_;
    std::optional<GainedMosaic> gained_;
    const SplitRows* mosaic_; // the last of these that there is
};

} // namespace kelvaro
