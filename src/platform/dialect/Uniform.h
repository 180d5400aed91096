// A parameter of a kernel: one value per image, the same for every pixel. Only Uniforms may steer
// control flow in a kernel text. They are computed in double and narrowed where they meet a pixel.
#pragma once

#include <cmath>

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
inline Uniform abs(Uniform x) {
    return std::fabs(x.value);
}
inline Uniform exp2(Uniform x) {
    return std::exp2(x.value);
}
inline Uniform exp(Uniform x) {
    return std::exp(x.value);
}
inline Uniform tanh(Uniform x) {
    return std::tanh(x.value);
}
inline Uniform sin(Uniform x) {
    return std::sin(x.value);
}
inline Uniform cos(Uniform x) {
    return std::cos(x.value);
}

} // namespace kelvaro::dialect
