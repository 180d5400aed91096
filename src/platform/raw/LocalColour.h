// A small map of the colour that bright, unsaturated surfaces have, filled into the saturated areas
// from around: what highlight recovery takes for the colour of a surface of which it sees only one
// or two channels. Filling is a pyramid of weighted means, after S. J. Gortler et al., "The
// Lumigraph" (1996), section 3.4 (push and pull).
#pragma once

#include "platform/raw/MosaicReader.h"

#include <array>
#include <vector>

namespace kelvaro {

class LocalColour {
public:
    // Looks at the active area of a sensor of three colours. `saturation` are balanced values. The
    // map stays empty when nothing is saturated.
    LocalColour(const SensorImage& sensor, const MosaicReader& reader,
                const std::array<float, 3>& saturation);

    bool isEmpty() const { return cells_.empty(); }
    // Red, green and blue in parts of their sum, at a place in active photosites; bilinear between
    // the cells' centres.
    std::array<float, 3> at(float row, float column) const;

private:
    // Red, green, blue and the weight, the colours multiplied by it.
    using Cell = std::array<float, 4>;
    struct Sum; // of what falls into a row of cells
    void addBayer(const MosaicReader& reader, int row, Sum& sum) const;
    void addXTrans(const SensorImage& sensor, const MosaicReader& reader, int row, Sum& sum) const;
    void addFullColour(const MosaicReader& reader, int row, Sum& sum) const;
    void fill();

    SensorRect active_;
    int cell_; // photosites along each side of one cell
    int columns_ = 0, rows_ = 0;
    std::vector<Cell> cells_;
};

} // namespace kelvaro
