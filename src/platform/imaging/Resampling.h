// Positions and weights of resampling, shared by the renderers: where a filter reaches, and which
// input pixels one output pixel is made of. Positions come from absolute pixels, never from a tile.
#pragma once

#include "platform/ImageNode.h"

#include <cstdint>
#include <vector>

namespace kelvaro {

inline constexpr int kLanczosLobes = 3;

// Half width in input pixels of the Lanczos filter at `scale` = output size / input size.
double lanczosSupport(double scale);
// sinc(x) sinc(x / 3) for |x| < 3, else 0.
double lanczosWeight(double x);
// Catmull and Rom's cubic (1974), a = −1/2.
double catmullRomWeight(double x);
double samplingWeight(Sampling sampling, double x);
// Input pixels on either side of a position that `sampling` reads.
int samplingRadius(Sampling sampling);

// One axis of a separable filter over `count` outputs from `firstOutput`. Weights are normalised,
// and those of pixels past the edge are added to the edge pixel.
struct FilterTaps {
    int taps = 0;                    // per output
    std::vector<std::int32_t> first; // absolute input index of each output's first tap
    std::vector<float> weights;      // count × taps
};

struct FilterAxis {
    double scale, inputOrigin, outputOrigin;
    int inputFirst, inputEnd; // the input's extent on this axis: past it the edge repeats
};

FilterTaps lanczosTaps(const FilterAxis& axis, int firstOutput, int count);

// Linear interpolation of one axis: the left neighbour (absolute, inside the input, with a right
// neighbour wherever the input has two pixels) and the weight of the right one.
struct LinearTaps {
    std::vector<std::int32_t> index;
    std::vector<float> fraction;
};

LinearTaps stretchTaps(int inputFirst, int inputSize, int outputFirst, int outputSize, int first,
                       int count);

} // namespace kelvaro
