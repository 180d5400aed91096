// The steps between display-linear and scene-linear light, worked out in double.
#pragma once

#include "KernelTest.h"

#include <cmath>

namespace kelvaro::test {

inline double norm(const Rgb& c) {
    return std::sqrt(c[0] * c[0] + c[1] * c[1] + c[2] * c[2]) * 0.57735027;
}

inline Rgb scaled(const Rgb& c, double f) {
    return {c[0] * f, c[1] * f, c[2] * f};
}

inline Rgb toScene(const Rgb& c) {
    const double n = norm(c);
    if (!(n > 0.36)) return c;
    if (n <= 0.98) return scaled(c, (0.36 + 0.64 * (n - 0.36) / (1 - n)) / n);
    return scaled(c, 20.2 * n / 0.98 / n);
}

inline Rgb toBitmap(const Rgb& c) {
    const double x = norm(c);
    if (!(x > 0.36)) return c;
    const double u = x - 0.36;
    return scaled(c, (x <= 20.2 ? 0.36 + 0.64 * u / (u + 0.64) : 0.98 * x / 20.2) / x);
}

} // namespace kelvaro::test
