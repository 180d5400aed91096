// Colours of drawn pictures: linear light, Rec. 709 primaries, 1 is a white surface in full light.
#pragma once

#include <algorithm>

namespace kelvaro::samples {

struct Colour {
    double r = 0, g = 0, b = 0;

    friend Colour operator+(Colour x, Colour y) { return {x.r + y.r, x.g + y.g, x.b + y.b}; }
    friend Colour operator*(Colour x, Colour y) { return {x.r * y.r, x.g * y.g, x.b * y.b}; }
    friend Colour operator*(Colour x, double s) { return {x.r * s, x.g * s, x.b * s}; }
};

inline Colour mix(Colour a, Colour b, double t) {
    return a * (1 - t) + b * t;
}

inline double unit(double x) {
    return std::clamp(x, 0.0, 1.0);
}

// 0 up to `from`, 1 from `to` on, smooth between; `from` may be the larger one.
inline double smoothStep(double from, double to, double x) {
    const double t = unit((x - from) / (to - from));
    return t * t * (3 - 2 * t);
}

} // namespace kelvaro::samples
