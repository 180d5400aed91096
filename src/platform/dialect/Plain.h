// The dialect with one number at a time. `scalar` holds a float and shares the vectors'
// polynomials: it shows faults of the vector code. `reference` holds a double and calls the C++
// library's functions: it shows what single precision and the polynomials cost.
#pragma once

#include "platform/Kernel.h"
#include "platform/dialect/Uniform.h"

#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#define DIALECT_INLINE [[gnu::always_inline, maybe_unused]] static inline
#define DIALECT_MEMBER [[gnu::always_inline]] inline

namespace kelvaro::dialect::scalar {

using Value = float;
#include "platform/dialect/Plain.inl"

DIALECT_INLINE std::uint32_t bitsOf(Float x) {
    return std::bit_cast<std::uint32_t>(x.v);
}
DIALECT_INLINE Float exponentAboutOne(Float x) {
    return number(static_cast<float>(static_cast<std::int32_t>(bitsOf(x) - 0x3f3504f3u) >> 23));
}
DIALECT_INLINE Float mantissaAboutOne(Float x) {
    return number(std::bit_cast<float>(((bitsOf(x) - 0x3f3504f3u) & 0x007fffffu) + 0x3f3504f3u));
}
DIALECT_INLINE Float powerOfTwo(Float shifted) {
    return number(std::bit_cast<float>((bitsOf(shifted) << 23) + 0x3f800000u));
}
DIALECT_INLINE Float inverseCubeRootSeed(Float x) {
    const float third = static_cast<float>(static_cast<std::int32_t>(bitsOf(x))) * (-1.0f / 3);
    return number(std::bit_cast<float>(static_cast<std::int32_t>(third + 1419900032.0f)));
}

#include "platform/dialect/Approximations.inl"

#include "platform/dialect/Composites.inl"

using Single = Float;
namespace precision { // where the reference does not find them by its arguments
DIALECT_INLINE Single single(Float x) {
    return x;
}
DIALECT_INLINE Float widened(Single x) {
    return x;
}
} // namespace precision
using namespace precision;

struct Pixel {
    Float x, y;
};
DIALECT_INLINE Float offsetFrom(Float position, Uniform origin) {
    const Uniform high = singlePart(origin);
    return position - Float(high) - Float(origin - high);
}

inline constexpr std::size_t kGroup = 1;

DIALECT_INLINE Float load(const float* p) {
    return number(*p);
}
DIALECT_INLINE void store(Float value, float* p) {
    *p = value.v;
}
DIALECT_INLINE Pixel pixelsFrom(double x, double y) {
    return {x, y};
}

#include "platform/dialect/Arguments.inl"

#include "platform/dialect/Rows.inl"

} // namespace kelvaro::dialect::scalar

namespace kelvaro::dialect::reference {

using Value = double;
#include "platform/dialect/Plain.inl"

// The library's functions, bounded as the polynomials are.
DIALECT_INLINE Float log2(Float x) {
    return std::log2(min(Float(0x1p128), max(Float(0x1p-126), x)).v);
}
DIALECT_INLINE Float exp2(Float x) {
    return std::exp2(x.v);
}
DIALECT_INLINE Float exp(Float x) {
    return std::exp(x.v);
}
DIALECT_INLINE Float tanh(Float x) {
    return std::tanh(x.v);
}
DIALECT_INLINE Float cbrt(Float x) {
    return std::cbrt(x.v);
}
DIALECT_INLINE Float atan2(Float y, Float x) {
    return std::atan2(y.v, x.v);
}
DIALECT_INLINE Float pow(Float x, Uniform p) {
    return exp2(log2(x) * Float(p));
}

#include "platform/dialect/Composites.inl"

using Single = scalar::Float; // what a text asks to be done in single precision is done so here too
DIALECT_INLINE Single single(Float x) {
    return Single(x.v);
}
DIALECT_INLINE Float widened(Single x) {
    return Float(static_cast<double>(x.v));
}

struct Pixel {
    Float x, y;
};
DIALECT_INLINE Float offsetFrom(Float position, Uniform origin) {
    return position - Float(origin);
}

#include "platform/dialect/Arguments.inl"

// One pixel, as a kernel's arguments are fetched from it.
struct Place {
    const KernelPixel& pixel;

    Float3 get(Float3*, int n) const {
        const double* p = pixel.inputs[n];
        return {p[0], p[1], p[2]};
    }
    Float2 get(Float2*, int n) const { return {pixel.inputs[n][0], pixel.inputs[n][1]}; }
    Float get(Float*, int n) const { return pixel.inputs[n][3]; }
    Pixel get(Pixel*, int) const { return {pixel.x, pixel.y}; }
    Uniform get(Uniform*, int n) const { return pixel.uniforms[n]; }
};

template<auto function>
void runPixel(KernelPixel& pixel) {
    const Float3 result = evaluate<function>(Place{pixel}, function);
    pixel.output[0] = result.x.v;
    pixel.output[1] = result.y.v;
    pixel.output[2] = result.z.v;
}

} // namespace kelvaro::dialect::reference

#undef DIALECT_INLINE
#undef DIALECT_MEMBER
