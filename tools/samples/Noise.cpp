#include "samples/Noise.h"

#include <cmath>

namespace kelvaro::samples {
namespace {

constexpr std::uint32_t kStepX = 0x9e3779b1u, kStepY = 0x85ebca77u, kStepSeed = 0xc2b2ae3du;

std::uint32_t mixed(std::uint32_t h) {
    h = (h ^ (h >> 16)) * 0x7feb352du;
    h = (h ^ (h >> 15)) * 0x846ca68bu;
    return h ^ (h >> 16);
}

// std::floor is a call into the library on the oldest instruction set that we support.
int wholeBelow(double x) {
    const int whole = int(x);
    return whole - (x < whole ? 1 : 0);
}

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
    return mixed(std::uint32_t(x) * kStepX + std::uint32_t(y) * kStepY + seed * kStepSeed);
}

double hashedUnit(std::int32_t x, std::int32_t y, std::uint32_t seed) {
    return hashed(x, y, seed) * (1.0 / 4294967295.0);
}

double valueNoise(double x, double y, std::uint32_t seed) {
    const int ix = wholeBelow(x), iy = wholeBelow(y);
    const double fx = fade(x - ix), fy = fade(y - iy);
    const std::uint32_t corner =
        std::uint32_t(ix) * kStepX + std::uint32_t(iy) * kStepY + seed * kStepSeed;
    const double a = mixed(corner), b = mixed(corner + kStepX);
    const double c = mixed(corner + kStepY), d = mixed(corner + kStepX + kStepY);
    const double lower = a + (b - a) * fx, upper = c + (d - c) * fx;
    return (lower + (upper - lower) * fy) * (1.0 / 4294967295.0);
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
