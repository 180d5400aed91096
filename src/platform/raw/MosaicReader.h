// Samples as balanced camera values: black level subtracted, 1 where a white surface first
// saturates. Outside the active area rows and columns are mirrored about the last photosite, which
// keeps the filter pattern, so that borders develop like the inside.
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
    const SensorImage& sensor_;
    int tableRows_ = 1;
    bool isSplittable_ = false; // integers whose levels repeat after two columns
    // [channel][row of the table][active column]: the black level, and what a sample above it
    // counts.
    std::vector<float> black_, scale_;
};

} // namespace kelvaro
