#include "platform/codecs/TiffSamples.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace kelvaro {

namespace {

template<class Stored>
Stored at(const std::byte* packed, std::size_t i) {
    Stored value;
    std::memcpy(&value, packed + sizeof value * i, sizeof value);
    return value;
}

} // namespace

void unpackIntegers(const std::byte* packed, int bits, std::span<std::uint16_t> out) {
    switch (bits) {
    case 8:
        for (std::size_t i = 0; i < out.size(); ++i)
            out[i] = at<std::uint8_t>(packed, i);
        return;
    case 16:
        std::memcpy(out.data(), packed, out.size_bytes());
        return;
    case 32:
        for (std::size_t i = 0; i < out.size(); ++i)
            out[i] = std::uint16_t(at<std::uint32_t>(packed, i) >> 16);
        return;
    default:
        break;
    }
    std::uint32_t pending = 0;
    int available = 0;
    for (auto& sample : out) {
        while (available < bits) {
            pending = pending << 8 | std::to_integer<std::uint32_t>(*packed++);
            available += 8;
        }
        available -= bits;
        sample = std::uint16_t(pending >> available & ((1U << bits) - 1));
    }
}

void unpackFloats(const std::byte* packed, int bits, std::span<float> out) {
    for (std::size_t i = 0; i < out.size(); ++i) {
        if (bits == 32) {
            out[i] = at<float>(packed, i);
        } else if (bits == 16) {
            out[i] = floatOfHalf(at<std::uint16_t>(packed, i));
        } else {
            // The conversion of a double outside float's range would not be defined.
            const double value = at<double>(packed, i);
            constexpr double most = double(std::numeric_limits<float>::max());
            out[i] = std::abs(value) <= most ? float(value) : 0.0F;
        }
    }
}

float floatOfHalf(std::uint16_t half) {
    const int exponent = half >> 10 & 31, fraction = half & 1023;
    float value = 0;
    if (exponent == 31)
        value = fraction ? std::numeric_limits<float>::quiet_NaN()
                         : std::numeric_limits<float>::infinity();
    else if (exponent == 0)
        value = std::ldexp(float(fraction), -24);
    else
        value = std::ldexp(float(1024 + fraction), exponent - 25);
    return half & 0x8000 ? -value : value;
}

} // namespace kelvaro
