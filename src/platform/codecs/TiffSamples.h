// From the packed samples of a TIFF row to samples of the machine's types.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvaro {

// Whole numbers of 1 to 16 bits (most significant bit first where they do not fill bytes) and of
// 32, of which the upper 16 bits count. Unscaled.
void unpackIntegers(const std::byte* packed, int bits, std::span<std::uint16_t> out);
// Floats of 16, 32 or 64 bits.
void unpackFloats(const std::byte* packed, int bits, std::span<float> out);

// IEEE 754 binary16.
float floatOfHalf(std::uint16_t half);

} // namespace kelvaro
