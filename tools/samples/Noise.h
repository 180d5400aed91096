// Repeatable noise for drawn pictures: the same numbers on every machine for the same seed. After
// K. Perlin, "An Image Synthesizer" (1985): value noise on a lattice, and sums of its octaves.
#pragma once

#include <cstdint>

namespace kelvaro::samples {

// A well-mixed number for a lattice point.
std::uint32_t hashed(std::int32_t x, std::int32_t y, std::uint32_t seed);

// hashed() as 0 … 1.
double hashedUnit(std::int32_t x, std::int32_t y, std::uint32_t seed);

// Smooth in both directions, 0 … 1, one feature per unit.
double valueNoise(double x, double y, std::uint32_t seed);

// Octaves of value noise, each half as strong and twice as fine; 0 … 1, mean near 0.5.
double fractalNoise(double x, double y, int octaves, std::uint32_t seed);

// The same with sharp crests, as mountains have; 0 … 1.
double ridgedNoise(double x, double y, int octaves, std::uint32_t seed);

} // namespace kelvaro::samples
