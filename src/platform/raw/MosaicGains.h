// Gains over the place on the sensor, applied after saturated photosites were rebuilt, so that the
// saturation stays the same everywhere.
#pragma once

#include "platform/raw/Demosaic.h"
#include "platform/raw/DngOpcodes.h"

#include <vector>

namespace kelvaro {

class GainedMosaic final : public SplitRows {
public:
    // All outlive this object. Rows and columns outside the active area take the mirrored place's
    // gain.
    GainedMosaic(const SensorImage& sensor, const OpcodeCorrections& corrections,
                 const SplitRows& mosaic);
    void split(int row, int column, int pairs, float* even, float* odd) const override;

    // The same for `count` values of one channel of a sensor that is no Bayer mosaic, after their
    // demosaic: active row, and columns `step` apart. Maps for some photosites only are left out.
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
    const OpcodeCorrections& corrections_;
    const SplitRows& mosaic_;
    std::vector<std::vector<GridColumn>> columns_; // per map
};

} // namespace kelvaro
