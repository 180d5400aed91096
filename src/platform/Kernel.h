// A point-wise kernel: a pure function from the pixels of one to four images at one place, and a
// few plain parameters, to a pixel. Kernel texts are written once in the dialect (platform/dialect)
// and compiled for every instruction set; this record is what the image graph keeps of one.
#pragma once

#include <cstddef>

namespace kelvaro {

inline constexpr int kMaximumKernelInputs = 4;
inline constexpr int kMaximumKernelUniforms = 24;

// One row of pixels for the vector back end. Planes are aligned to 64 bytes and may be read and
// written past `count` up to the next multiple of kRowGroup. Output planes may be the first input's
// planes.
struct KernelRow {
    const float* inputs[kMaximumKernelInputs][4]; // r, g, b, a; a is null for opaque inputs
    float* output[3];                             // alpha is never written
    std::size_t count = 0;                        // pixels
    double x = 0, y = 0;                          // centre of the first pixel in image space
    const double* uniforms = nullptr;
};

// One pixel for the reference back end, in double precision.
struct KernelPixel {
    double inputs[kMaximumKernelInputs][4];
    double output[3];
    double x = 0, y = 0;
    const double* uniforms = nullptr;
};

struct Kernel {
    const char* name;
    int inputs;
    int uniforms;
    void (*vector)(const KernelRow&); // best instruction set of this machine
    void (*scalar)(const KernelRow&); // the same text with one float at a time
    void (*reference)(KernelPixel&);  // the same text in double, library maths
    int planes[kMaximumKernelInputs]; // read of each input, counted from red
};

} // namespace kelvaro
