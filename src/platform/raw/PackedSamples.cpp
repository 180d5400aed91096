#include "platform/raw/PackedSamples.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace kelvaro {

namespace {

void unpackWords(const std::byte* from, bool isBigEndian, int samples, std::uint16_t* out) {
    std::memcpy(out, from, std::size_t(samples) * sizeof *out);
    if (isBigEndian == (std::endian::native == std::endian::big)) return;
    for (int i = 0; i < samples; ++i)
        out[i] = std::uint16_t(out[i] >> 8 | out[i] << 8);
}

void unpackBits(std::span<const std::byte> bytes, int bits, int samples, std::uint16_t* out) {
    std::uint64_t window = 0; // the bits that wait are its highest
    int count = 0;
    std::size_t at = 0;
    for (int i = 0; i < samples; ++i) {
        while (count < bits) {
            const auto next = at < bytes.size() ? std::to_integer<std::uint64_t>(bytes[at]) : 0;
            window |= next << (56 - count);
            count += 8;
            ++at;
        }
        out[i] = std::uint16_t(window >> (64 - bits));
        window <<= bits;
        count -= bits;
    }
}

} // namespace

void unpackRow(std::span<const std::byte> bytes, int bits, bool isBigEndian, int samples,
               std::uint16_t* out) {
    if (bits == 16) {
        unpackWords(bytes.data(), isBigEndian, samples, out);
    } else if (bits == 8) {
        std::transform(bytes.data(), bytes.data() + samples, out,
                       [](std::byte b) { return std::to_integer<std::uint16_t>(b); });
    } else {
        unpackBits(bytes, bits, samples, out);
    }
}

} // namespace kelvaro
