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
    float* row(int y) const { return data + std::ptrdiff_t(y & (rows - 1)) * width; }
    const float* clamped(int y) const { return row(std::clamp(y, 0, height - 1)); }
};

// Row `y` smoothed with `step` pixels between the taps. `scratch` has room for a row.
void smoothedRow(const RowRing& in, int y, int step, float* scratch, float* out);

} // namespace kelvaro
