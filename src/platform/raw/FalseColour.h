// What a demosaic gets wrong next to hard edges: a few pixels whose colour differs from all around
// them. There the differences of red and blue from luminance are replaced by the median of 3 × 3
// pixels (W. T. Freeman, US patent 4,724,395, 1988); where luminance is even they stay as they are,
// so that fine colour does. Values in the compressive domain of the demosaic. Any thread.
#pragma once

#include <cstddef>

namespace kelvaro {

// Luminance that differs by less within a pixel's four neighbours is no edge; by twice as much, and
// the median counts wholly.
inline constexpr float kLeastEdge = 0.05f;

// The row itself and those above and below it.
struct ThreeRows {
    const float *above, *here, *below;
};

// Of both colour differences; the first and the last pixel stay as they are. Rows have room for a
// whole vector at their end.
void removeFalseColour(const ThreeRows& luminance, const ThreeRows (&differences)[2],
                       float* const (&out)[2], int count);

} // namespace kelvaro
