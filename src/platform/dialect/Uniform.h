// A parameter of a kernel: one value per image, the same for every pixel. Only Uniforms may steer
// control flow in a kernel text. They are computed in double and narrowed where they meet a pixel.
#pragma once

#include <bit>
#include <cstdint>

namespace kelvaro::dialect {

struct Uniform {
    double value = 0;

    constexpr Uniform() = default;
    constexpr Uniform(double v) : value(v) {} // literals and parameters are Uniforms
};

constexpr Uniform operator+(Uniform x, Uniform y) {
    return x.value + y.value;
}
constexpr Uniform operator-(Uniform x, Uniform y) {
    return x.value - y.value;
}
constexpr Uniform operator*(Uniform x, Uniform y) {
    return x.value * y.value;
}
constexpr Uniform operator/(Uniform x, Uniform y) {
    return x.value / y.value;
}
constexpr Uniform operator-(Uniform x) {
    return -x.value;
}
constexpr bool operator<(Uniform x, Uniform y) {
    return x.value < y.value;
}
constexpr bool operator>(Uniform x, Uniform y) {
    return x.value > y.value;
}
constexpr bool operator<=(Uniform x, Uniform y) {
    return x.value <= y.value;
}
constexpr bool operator>=(Uniform x, Uniform y) {
    return x.value >= y.value;
}
constexpr bool operator==(Uniform x, Uniform y) {
    return x.value == y.value;
}
constexpr bool operator!=(Uniform x, Uniform y) {
    return x.value != y.value;
}

// A NaN in the second operand gives the first one, as for pixels.
constexpr Uniform min(Uniform x, Uniform y) {
    return y.value < x.value ? y : x;
}
constexpr Uniform max(Uniform x, Uniform y) {
    return x.value < y.value ? y : x;
}
constexpr Uniform clamp(Uniform x, Uniform low, Uniform high) {
    return min(high, max(low, x));
}
constexpr Uniform abs(Uniform x) {
    return x.value < 0 ? -x.value : x.value;
}

// The functions below are plain arithmetic instead of calls of the C++ library: only then does a
// compiler move them out of the loop over the pixels. Relative error 4e-16 for exp2 over
// -1000 … 1000, where arguments are clamped to; the others follow.
constexpr Uniform exp2(Uniform x) {
    const double bounded = clamp(x, -1000.0, 1000.0).value;
    const double shifted = bounded + 0x1.8p52; // the low bits are the nearest integer
    const double f = (bounded - (shifted - 0x1.8p52)) * 0.6931471805599453;
    double sum = 1; // e^f as a Taylor sum, |f| < 0.35
    for (int n = 13; n > 0; n--)
        sum = 1 + sum * f / n;
    const auto power = std::bit_cast<std::uint64_t>(shifted) << 52;
    return sum * std::bit_cast<double>(power + 0x3ff0000000000000);
}
constexpr Uniform tanh(Uniform x) {
    return 1.0 - 2.0 / (exp2(x * 2.8853900817779268) + 1.0);
}
// Angles up to a half turn, as a Taylor sum: 1e-14 absolute.
constexpr Uniform cos(Uniform x) {
    double sum = 1;
    for (int n = 28; n > 0; n -= 2)
        sum = 1 - sum * x.value * x.value / (n * (n - 1));
    return sum;
}
constexpr Uniform sin(Uniform x) {
    double sum = 1;
    for (int n = 29; n > 1; n -= 2)
        sum = 1 - sum * x.value * x.value / (n * (n - 1));
    return x.value * sum;
}

} // namespace kelvaro::dialect
