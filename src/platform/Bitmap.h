// Interleaved pixels as files hold them: rows top-down, red green blue and perhaps straight alpha,
// tightly packed, in the machine's byte order.
#pragma once

#include "base/Geometry.h"
#include "platform/PixelMemory.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace kelvaro {

enum class SampleType { u8, u16, f32 };

inline constexpr std::size_t sampleBytes(SampleType type) {
    return type == SampleType::u8 ? 1 : type == SampleType::u16 ? 2 : 4;
}

struct Bitmap {
    PixelSize size;
    int channels = 3; // 3, or 4 with straight (not premultiplied) alpha last
    SampleType type = SampleType::u8;
    PixelMemory samples; // size.width × size.height × channels

    Bitmap() = default;
    // Uninitialised samples. Throws std::bad_alloc.
    Bitmap(PixelSize pixels, int channelCount, SampleType sampleType)
        : size(pixels),
          channels(channelCount),
          type(sampleType),
          samples(allocatePixels(bytes())) {}

    std::size_t rowBytes() const {
        return std::size_t(size.width) * std::size_t(channels) * sampleBytes(type);
    }
    std::size_t bytes() const { return rowBytes() * std::size_t(size.height); }
    template<class T>
    T* row(int y) {
        return reinterpret_cast<T*>(samples.get() + rowBytes() * std::size_t(y));
    }
    template<class T>
    const T* row(int y) const {
        return reinterpret_cast<const T*>(samples.get() + rowBytes() * std::size_t(y));
    }
};

// How stored samples become linear light with Rec. 709 primaries.
struct ColourDecoding {
    // Per channel, one linear value for each stored value: 256 entries for u8, 65536 for u16
    // (shared by channels that are equal); empty for f32 samples, which are linear already.
    std::array<std::shared_ptr<const std::vector<float>>, 3> tone;
    // Rows of the matrix from the linear stored primaries to Rec. 709.
    std::array<std::array<float, 3>, 3> toWorking{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    bool matrixIsIdentity = true;
};

} // namespace kelvaro
