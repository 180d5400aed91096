// The inner loops of the fast executor over one row of float samples, compiled for every
// instruction set and chosen at run time. Rows need no alignment; reading or writing stays below
// the next multiple of kRowGroup behind the last sample, so rows must be padded like those of a
// Raster.
#pragma once

#include "platform/Raster.h"

#include <cstddef>
#include <cstdint>

namespace kelvaro::rows {

void fill(float* out, float value, std::size_t count);
// For one line or two: out[line][i] += sum over k < rows of lowest[k × stride + i] ×
// weights[line][k], k rising (fused). Touches exactly `count` samples of each row.
void addRows(float* const* out, int lines, const float* lowest, std::ptrdiff_t stride,
             const float* const* weights, int rows, std::size_t count);
// out = a + t (b − a)
void mix(float* out, const float* a, const float* b, float t, std::size_t count);
// One filter for kFilterLines lines at once: out[line][i] = sum over k < taps of in[line][first[i]
// + k] × weights[i × taps + k], k rising. `first` never decreases. Lines that `out` has null for
// are not written; `in` has none. `scratch` holds lineScratch() floats.
struct LineFilter {
    const std::int32_t* first;
    const float* weights;
    int taps;
    std::size_t count;
};
inline constexpr int kFilterLines = 16;
inline constexpr std::size_t kFilterBlock = 64; // outputs whose inputs stay in the first caches
std::size_t lineScratch(const LineFilter& filter);
void filterLines(float* const* out, const float* const* in, const LineFilter& filter,
                 float* scratch);
// out[plane][i] = in[plane][index[i]] + fraction[i] (in[plane][index[i] + 1] − in[plane][index[i]])
// for one to four planes; index never decreases.
void interpolate(float* const* out, const float* const* in, int planes, const std::int32_t* index,
                 const float* fraction, std::size_t count);
// A row of a Catmull-Rom resampling, all planes, where the 4 × 4 neighbours of every pixel lie
// inside the stored picture. Pixel i reads around column u + (x + i) du and row v + (x + i) dv,
// counted in centres of stored pixels from the place where the storage has originColumn and
// originRow. Writes up to three samples more than `count`.
struct CubicLine {
    double x, u, du, v, dv;
    int originColumn, originRow;
    std::size_t count;
};
void cubic(float* const* out, const float* const* in, int planes, std::ptrdiff_t stride,
           const CubicLine& line);
void maximum(float* out, const float* a, const float* b, std::size_t count);
// out = top + bottom (1 − topAlpha), premultiplied source-over of one plane.
void over(float* out, const float* top, const float* topAlpha, const float* bottom,
          std::size_t count);

} // namespace kelvaro::rows
