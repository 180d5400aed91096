// Gains over the place on the sensor, applied after saturated photosites were rebuilt, so that the
// saturation stays the same everywhere.
#pragma once

#include "platform/raw/Demosaic.h"
#include "platform/raw/DngOpcodes.h"

#include <vector>

namespace kelvaro {

class PlaceGains {
public:
    // Both outlive this object. Rows and columns outside the active area take the mirrored place's
    // gain.
    PlaceGains(const SensorImage& sensor, const Gains& gains);
    // `pairs` photosites of a Bayer mosaic at even and odd distance from (row, column), stored.
    void multiplyMosaic(int row, int column, int pairs, float* even, float* odd) const;
    // `count` values of one channel, of a demosaiced picture or a sensor that has all of them:
    // active row, and columns `step` apart. Maps for some photosites only are left out.
    void multiply(int row, int column, int step, int count, int channel, float* values) const;

private:
    // Where a column of the active area lies in a map's grid: index −1 where the map has nothing
    // for it.
    struct GridColumn {
        int index = -1;
        float fraction = 0;
    };
    float radial(const RadialGain& gain, int y, int x) const;
    SensorRect active_;
    const Gains& gains_;
    std::vector<std::vector<GridColumn>> columns_; // per map
};

// A Bayer mosaic with its gains.
class GainedMosaic final : public SplitRows {
public:
    // All outlive this object.
    GainedMosaic(const PlaceGains& gains, const SplitRows& mosaic)
        : gains_(gains), mosaic_(mosaic) {}
    void split(int row, int column, int pairs, float* even, float* odd) const override {
        mosaic_.split(row, column, pairs, even, odd);
        gains_.multiplyMosaic(row, column, pairs, even, odd);
    }

private:
    const PlaceGains& gains_;
    const SplitRows& mosaic_;
};

} // namespace kelvaro
