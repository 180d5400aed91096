// The intermediate planes of the Bayer demosaic: rings of rows, each row in two halves. Only the
// demosaic's own sources use it.
#pragma once

#include "platform/raw/Demosaic.h"

#include <cstddef>
#include <vector>

namespace kelvaro {

// Rows of one half per photosite colour: `at` gives a row whose first value belongs to the first
// pair.
class HalfRing {
public:
    static constexpr int kRows = 16;
    static constexpr int kPadding = 32; // floats at both ends that vectors may touch
    static constexpr int kPairs = BayerDemosaic::kMaximumWidth / 2 + kDemosaicBorder + 1;
    static constexpr int kStride = (kPairs + 15) / 16 * 16 + 2 * kPadding;

    HalfRing() : values_(std::size_t(kRows) * kStride) {}
    float* at(int row) { return values_.data() + (row & (kRows - 1)) * kStride + kPadding; }

private:
    std::vector<float> values_;
};

// Both column parities.
struct FullRing {
    HalfRing halves[2];
    // The values `distance` columns from the photosites of `parity`, seen from pair 0.
    float* tap(int row, int parity, int distance) {
        const int to = (parity + distance) & 1;
        return halves[to].at(row) + (parity + distance - to) / 2;
    }
};

// Only the photosites of red and blue, whose parity changes from row to row.
struct ColourRing {
    HalfRing half;
    float* tap(int row, int parity, int distance) {
        const int to = (parity + distance) & 1;
        return half.at(row) + (parity + distance - to) / 2;
    }
};

struct DemosaicRings {
    FullRing mosaic, vertical, horizontal, direction;
    FullRing single[2]; // one row each, at row 0
    ColourRing diagonalP, diagonalQ, diagonal, green, opposite;
    float toe = kLeastToe;
    int pairs = 0;
    // Column parity of red or blue in an even row, 0 or 1.
    int parity = 0;
    int colourParity(int row) const { return (parity + row) & 1; }
};

} // namespace kelvaro
