// Rows of samples as TIFF 6.0 stores them without compression.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvaro {

// Bytes of a row; rows begin at whole bytes.
constexpr std::size_t packedRowBytes(int samples, int bits) {
    return (std::size_t(samples) * std::size_t(bits) + 7) / 8;
}

// Samples of 8 … 16 bits: whole words of 16 bits in the file's byte order, others without gaps from
// the highest bit of the first byte on. `bytes` holds at least what `samples` takes.
void unpackRow(std::span<const std::byte> bytes, int bits, bool isBigEndian, int samples,
               std::uint16_t* out);

} // namespace kelvaro
