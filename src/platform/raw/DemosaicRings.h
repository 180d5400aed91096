// The intermediate planes of the Bayer demosaic: rings of rows, each row in two halves, no more of
// them than its steps reach for, so that all stay in the cache. Only the demosaic's own sources use
// it.
#pragma once

#include "platform/raw/Demosaic.h"

#include <cstddef>

namespace kelvaro {

// The last `kRows` rows of values, a power of two; `at` gives a row whose first value belongs to
// the first pair. Rows count over the sensor and may be negative.
template<int kRows>
class HalfRing {
public:
    static constexpr int kPadding = 32; // floats at both ends that vectors may touch
    static constexpr int kPairs = BayerDemosaic::kMaximumWidth / 2 + kDemosaicBorder + 1;
    static constexpr int kStride = (kPairs + 15) / 16 * 16 + 2 * kPadding;

    float* at(int row) { return values_ + (row & (kRows - 1)) * kStride + kPadding; }

private:
    alignas(64) float values_[kRows * kStride] = {};
};

// Both column parities.
template<int kRows>
struct FullRing {
    HalfRing<kRows> halves[2];
    // The values `distance` columns from the photosites of `parity`, seen from pair 0.
    float* tap(int row, int parity, int distance) {
        const int to = (parity + distance) & 1;
        return halves[to].at(row) + (parity + distance - to) / 2;
    }
};

// Only the photosites of red and blue, whose parity changes from row to row.
template<int kRows>
struct ColourRing {
    HalfRing<kRows> half;
    float* tap(int row, int parity, int distance) {
        const int to = (parity + distance) & 1;
        return half.at(row) + (parity + distance - to) / 2;
    }
};

struct DemosaicRings {
    FullRing<16> mosaic;
    FullRing<4> vertical, horizontal;
    FullRing<8> direction;
    FullRing<1> single[2];
    ColourRing<4> diagonalP, diagonalQ;
    ColourRing<8> diagonal, green, opposite;
    float toe = kLeastToe;
    int left = 0, pairs = 0;    // columns with the border
    int begin = 0, next = 0;    // the first row that was read, with the border; the next one
    int redRow = 0, parity = 0; // parity of rows of red; column parity of red or blue in even rows
    int colourParity(int row) const { return (parity + row) & 1; }
};

} // namespace kelvaro
