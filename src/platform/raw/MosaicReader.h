// Samples as balanced camera values: black level subtracted, 1 where a white surface first
// saturates. Outside the active area rows and columns are mirrored about the last photosite, or the
// last about which the filter pattern is the same on both sides, so that borders develop like the
// inside.
#pragma once

#include "platform/raw/Demosaic.h"
#include "platform/raw/SensorImage.h"

#include <vector>

namespace kelvaro {

class MosaicReader final : public SplitRows {
public:
    explicit MosaicReader(const SensorImage& sensor);
    // `count` values of one channel (0 for mosaics) from stored (row, column), which may lie
    // outside. Non-finite samples become 0.
    void row(int row, int column, int count, int channel, float* out) const;
    void split(int row, int column, int pairs, float* even, float* odd) const override;
    // Where red stands in the 2 × 2 pattern of the stored rows and columns. Bayer sensors only.
    BayerPhase phase() const;

private:
    // Rows or columns of the active area, and those about which the ones outside are mirrored.
    struct Axis {
        int first = 0, length = 1, mirrorFirst = 0, mirrorLast = 0;
    };
    // The place inside that shows what lies beyond the edge, through the same filter.
    int inside(int at, const Axis& axis) const;

    const SensorImage& sensor_;
    Axis rows_, columns_;
    int tableRows_ = 1;
    bool isSplittable_ = false; // integers whose levels repeat after two columns
    // [channel][row of the table][active column]: the black level, and what a sample above it
    // counts.
    std::vector<float> black_, scale_;
};

} // namespace kelvaro
