// Smoothing of planes of floats by the B3 spline (1 4 6 4 1) / 16 in both directions, with room
// between the taps: one level of an undecimated wavelet decomposition. Edges repeat. Any thread.
#pragma once

#include <algorithm>
#include <cstddef>

namespace kelvaro {

// The last rows of a plane, as many as a power of two holds, or all of them. Rows outside the
// picture repeat its edges.
struct RowRing {
    float* data;
    int rows, width, height;
    std::ptrdiff_t stride;
    float* row(int y) const { return data + std::ptrdiff_t(y & (rows - 1)) * stride; }
    const float* clamped(int y) const { return row(std::clamp(y, 0, height - 1)); }
};

// Floats that a scratch row needs at both ends, for the taps and for the last vector.
inline constexpr int kSmoothingPadding = 64;
constexpr std::size_t smoothingScratch(int width) {
    return std::size_t(width) + 2 * kSmoothingPadding;
}

// Row `y` smoothed downwards only, with `step` (at most 8) pixels between the taps: its first pixel
// in `scratch`, which has room for smoothingScratch(), with the edges repeated at both ends.
float* smoothedDown(const RowRing& in, int y, int step, float* scratch);

// Row `y` smoothed in both directions.
void smoothedRow(const RowRing& in, int y, int step, float* scratch, float* out);

} // namespace kelvaro
