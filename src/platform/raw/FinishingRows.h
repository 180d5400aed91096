// Row arithmetic of the finishing, in the vectors of each instruction set. Colours are linear; in
// the compressive domain they are an encoded luminance y and what red and blue differ from it, u
// and v. Any thread.
#pragma once

#include <cstddef>

namespace kelvaro {

// Standard deviation that falls or rises linearly between two luminances and is even outside.
struct NoiseLine {
    float darkAt = 0, lightAt = 1; // encoded luminance
    float dark = 0, light = 0;
};

void splitColours(const float* r, const float* g, const float* b, float toe, float* y, float* u,
                  float* v, std::size_t count);
void joinColours(const float* y, const float* u, const float* v, float toe, float* r, float* g,
                 float* b, std::size_t count);

// In place from smoothed luminance to sharpened: less is added where the detail is no more than
// noise, less where it is already strong.
void sharpenLuminance(const float* y, const NoiseLine& noise, float amount, float* smooth,
                      std::size_t count);

// What one level of the decomposition leaves of a row.
struct LevelRow {
    const float* down;    // the row smoothed downwards, its edges repeated
    const float *in, *y;  // the row itself, and its luminance
    float *smooth, *sum;  // smoothed; what is kept of the details so far
    bool isFirst, isLast; // of the levels
};
// Smooths the row across and adds to `sum` the part of the detail (in − smooth) that stands out
// from `times` the noise; the first level begins the sum, the last one adds what is smooth instead
// of storing it. Rows have room for a whole vector at their end.
void shrinkDetail(const LevelRow& row, int step, const NoiseLine& noise, float times, int count);

} // namespace kelvaro
