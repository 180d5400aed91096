#include "samples/Noise.h"

#include <cmath>

namespace kelvaro::samples {
namespace {

double fade(double t) {
    return t * t * t * (t * (t * 6 - 15) + 10);
}

// Sums octave(x, y, seed) over `octaves`, scaled so that the result stays in 0 … 1.
template<class Octave>
double octaveSum(double x, double y, int octaves, std::uint32_t seed, Octave octave) {
    double sum = 0, weight = 1, weights = 0;
    for (int i = 0; i < octaves; ++i) {
        sum += weight * octave(x, y, seed + std::uint32_t(i) * 0x9e3779b9u);
        weights += weight;
        weight *= 0.5;
        // A turn between octaves hides the lattice.
        const double turned = 1.6 * x + 1.2 * y;
        y = 1.6 * y - 1.2 * x;
        x = turned;
    }
    return sum / weights;
}

} // namespace

std::uint32_t hashed(std::int32_t x, std::int32_t y, std::uint32_t seed) {
    std::uint32_t h = seed * 0x85ebca6bu + 0x27d4eb2fu;
    h = (h ^ std::uint32_t(x)) * 0xcc9e2d51u;
    h ^= h >> 15;
    h = (h ^ std::uint32_t(y)) * 0x1b873593u;
    h ^= h >> 13;
    h *= 0xc2b2ae35u;
    return h ^ (h >> 16);
}

double hashedUnit(std::int32_t x, std::int32_t y, std::uint32_t seed) {
    return hashed(x, y, seed) * (1.0 / 4294967295.0);
}

double valueNoise(double x, double y, std::uint32_t seed) {
    const double left = std::floor(x), low = std::floor(y);
    const auto ix = std::int32_t(left), iy = std::int32_t(low);
    const double fx = fade(x - left), fy = fade(y - low);
    const double a = hashedUnit(ix, iy, seed), b = hashedUnit(ix + 1, iy, seed);
    const double c = hashedUnit(ix, iy + 1, seed), d = hashedUnit(ix + 1, iy + 1, seed);
    const double lower = a + (b - a) * fx, upper = c + (d - c) * fx;
    return lower + (upper - lower) * fy;
}

double fractalNoise(double x, double y, int octaves, std::uint32_t seed) {
    return octaveSum(x, y, octaves, seed, valueNoise);
}

double ridgedNoise(double x, double y, int octaves, std::uint32_t seed) {
    return octaveSum(x, y, octaves, seed, [](double u, double v, std::uint32_t s) {
        const double crest = 1 - std::abs(2 * valueNoise(u, v, s) - 1);
        return crest * crest;
    });
}

} // namespace kelvaro::samples
