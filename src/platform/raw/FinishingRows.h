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

// Sharpens a row of luminance, of which `down` is smoothed downwards with its edges repeated: less
// is added where the detail is no more than noise, less where it is already strong. Rows have room
// for a whole vector at their end.
void sharpenLuminance(const float* y, const float* down, const NoiseLine& noise, float amount,
                      float* out, int count);

// A row of both colour differences at one level of the decomposition.
struct LevelRows {
    const float* down[2];        // smoothed downwards, the edges repeated
    const float *in[2], *y;      // as it is, and its luminance
    float *smooth[2], *parts[2]; // smoothed; what becomes of the details
};
enum class Details {
    begun,  // `parts` begins with what is kept of them
    summed, // what is kept is added, and what is smooth
    removed // `parts` is what is not kept; `smooth` is not written
};
// Smooths the rows across and shrinks their details (in − smooth) by how they stand out from
// `times` the noise of each difference; both noises change between the same two luminances. Rows
// have room for a whole vector at their end.
void shrinkDetails(const LevelRows& rows, Details use, int step, const NoiseLine (&noise)[2],
                   float times, int count);

// Every second value, the first one included: (count + 1) / 2. Both rows have room for two whole
// vectors at their end.
void takeHalf(const float* in, float* out, int count);
// Takes from `count` values what lies halfway between two rows of half the width, interpolated.
// Both rows have one value more than half of `count`; all have room for two whole vectors at their
// end, where what is written means nothing.
void takeAway(const float* above, const float* below, float* values, int count);

} // namespace kelvaro
