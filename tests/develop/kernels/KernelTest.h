// Runs a kernel in all its forms (vectors of every instruction set of this machine, one float, the
// double reference) on the same pixels and compares each with a transcription written for the test.
#pragma once

#include "platform/Kernel.h"

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kelvaro::test {

using Rgb = std::array<double, 3>;
using Rgba = std::array<double, 4>;

struct Sample {
    std::array<Rgba, kMaximumKernelInputs> inputs{};
    double x = 0.5, y = 0.5;
};

// What the kernel should give for a sample, worked out in double.
using Transcription = std::function<Rgb(const Sample&, const std::vector<double>& uniforms)>;

struct Comparison {
    double tolerance = 2e-5;    // times max(1, |expected|)
    bool mixesChannels = false; // the scale is the pixel's largest channel, not each one's own
    std::vector<Transcription> neighbours = {}; // as good as the expected value, next to a branch
    double exceptions = 0;      // share of samples that may miss it, next to a branch
    bool guides = false;        // the second and later inputs are guide coefficients, -1 to 1
    bool specials = true;       // include 0, NaN, infinity and denormal channels
    bool infinities = true;     // among the special values
    double low = -1, high = 25; // range of the channels
};

// Grey ramps, random colours (even and logarithmic) and special values, all exact in float.
std::vector<Sample> samplesFor(const Kernel& kernel, const Comparison& how);

// Fails, with the worst sample, unless every form agrees with `expected` for each set of uniforms,
// and a pixel's result is the same, bit for bit, whichever neighbours share its group.
void compareAllForms(const Kernel& kernel, const std::vector<std::vector<double>>& uniformSets,
                     const Transcription& expected, const Comparison& how = {});

// One pixel through the vector form.
Rgb vectorPixel(const Kernel& kernel, const Sample& sample, const std::vector<double>& uniforms);

// Instruction sets that are compiled in and run here, and the choice of one of them. 0 restores
// all.
std::vector<std::int64_t> instructionSets();
void chooseInstructionSet(std::int64_t target);

inline double luminance(const Rgb& c) {
    return 0.2126 * c[0] + 0.7152 * c[1] + 0.0722 * c[2];
}
inline Rgb rgb(const Rgba& c) {
    return {c[0], c[1], c[2]};
}
// The nearest float.
double exact(double value);
// As kernels have it: NaN gives 0.
inline double notBelowZero(double x) {
    return x > 0 ? x : 0;
}
double clamped(double x, double low, double high);    // NaN gives low
double smoothstep(double low, double high, double x); // NaN gives 0
// log2 for positive normal numbers; other values count as 2^-126, infinity as 2^128.
double boundedLog2(double x);

} // namespace kelvaro::test
