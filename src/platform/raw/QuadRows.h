// Row arithmetic on the quads of a Bayer mosaic, whose columns are split by parity: what is done to
// every photosite of a sensor, in the vectors of each instruction set. Any thread.
#pragma once

#include <cstdint>

namespace kelvaro {

// Two columns' levels, that of even and that of odd distance.
struct PairLevels {
    float black[2], scale[2];
};
// (sample − black) × scale of `pairs` stored pairs, split.
void levelPairs(const std::uint16_t* samples, const PairLevels& levels, int pairs, float* even,
                float* odd);

// The first pair from `from` on, rounded down to a whole group of kPairGroup, in whose group a
// value lies above its limit; `pairs` where there is none.
inline constexpr int kPairGroup = 16;
int nextAbove(const float* even, const float* odd, const float (&limits)[2], int from, int pairs);

// The value a quarter of the way from b to c, by a Catmull-Rom spline that stays between the two.
void quarterWayRow(const float* a, const float* b, const float* c, const float* d, float* out,
                   int count);

// Sums of balanced colours, weighted with the square of their brightness, and of the weights.
struct ColourSums {
    float *red, *green, *blue, *weight; // one for each quad of a row
};
struct QuadRow {
    const float *red, *firstGreen, *secondGreen, *blue;
};
// Adds a row of quads; those with a channel above its limit are left out, and true tells of one.
bool addQuads(const QuadRow& row, const float (&limits)[3], int count, const ColourSums& sums);

} // namespace kelvaro
