// From a sensor's samples to scene-linear Rec. 709: black and white level, balance, demosaic,
// highlights, camera matrix, crop and orientation. Float throughout; values below 0 and above 1 are
// kept.
#pragma once

#include "base/Cancellation.h"
#include "platform/Raster.h"
#include "platform/RawEngine.h"
#include "platform/raw/SensorImage.h"

#include <memory>
#include <optional>

namespace kelvaro {

// What the engine calls its default sharpening; settings move it between none and three times as
// much.
inline constexpr double kDefaultSharpness = 50;

// Size of the upright picture; reduction 2 makes one pixel of 2 × 2 photosites.
PixelSize developedSize(const SensorImage& sensor, int reduction);

// A picture ready to be developed tile by tile, in any order and from any number of threads: what
// concerns the whole (noise, saturated areas) is measured by the constructor. The samples that the
// sensor points at must outlive it. Throws std::bad_alloc.
class Development {
public:
    Development(const SensorImage& sensor, const RawDevelopSettings& settings);
    ~Development();

    PixelSize size() const { return size_; } // upright
    // The grid of tiles, counted along the sensor's rows, and the place of one in the upright
    // picture, whose lower-left corner is (0, 0).
    PixelSize tiles() const;
    PixelRect tile(int column, int row) const;
    // Develops it into a view that covers at least its place.
    void run(int column, int row, const TileView& target) const;

private:
    class Developer;
    SensorRect stored(int column, int row) const;
    std::unique_ptr<const Developer> developer_;
    PixelSize size_;
    int orientation_;
};

// The whole picture, opaque; none when cancelled. Runs on all cores and gives the same bits with
// any number of them. Throws std::bad_alloc.
std::optional<Raster> develop(const SensorImage& sensor, const RawDevelopSettings& settings,
                              const Cancellation* cancellation);

} // namespace kelvaro
