// Lossless JPEG files whose samples are known.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <initializer_list>
#include <random>
#include <vector>

namespace kelvaro::test {

using Bytes = std::vector<std::byte>;

// Writes T.81's lossless process with one table of categories 0 … 16, so that every difference has
// a place: as codes of five bits, or as one code of each length and two of 16.
class LosslessEncoder {
public:
    enum class Codes { even, uneven };
    LosslessEncoder(int width, int height, int components, int predictor, int precision,
                    Codes codes = Codes::even)
        : width_(width),
          components_(components),
          predictor_(predictor),
          precision_(precision),
          codes_(codes) {
        bytes({0xff, 0xd8, 0xff, 0xc4, 0, 2 + 17 + 17, 0});
        for (int length = 1; length <= 16; ++length) {
            const int even = length == 5 ? 17 : 0, uneven = length == 16 ? 2 : 1;
            bytes({codes == Codes::even ? even : uneven});
        }
        for (int category = 0; category <= 16; ++category)
            bytes({category});
        bytes({0xff, 0xc3, 0, 8 + 3 * components, precision, height >> 8, height & 255, width >> 8,
               width & 255, components});
        for (int c = 0; c < components; ++c)
            bytes({c + 1, 0x11, 0});
        bytes({0xff, 0xda, 0, 6 + 2 * components, components});
        for (int c = 0; c < components; ++c)
            bytes({c + 1, 0});
        bytes({predictor, 0, 0});
    }

    // Definition: T.81, tables H.1 and H.2.
    Bytes encode(const std::vector<std::uint16_t>& samples) {
        const int row = width_ * components_;
        for (int i = 0; i < int(samples.size()); ++i) {
            const int y = i / row, x = i % row / components_;
            const auto at = [&](int back) { return int(samples[std::size_t(i - back)]); };
            const int a = x ? at(components_) : 0, b = y ? at(row) : 0,
                      c = x && y ? at(row + components_) : 0;
            int guess = 1 << (precision_ - 1);
            if (y == 0 && x > 0) guess = a;
            if (y > 0 && x == 0) guess = b;
            if (y > 0 && x > 0) {
                const int guesses[] = {
                    0, a, b, c, a + b - c, a + ((b - c) >> 1), b + ((a - c) >> 1), (a + b) >> 1};
                guess = guesses[predictor_];
            }
            put(std::int16_t(samples[std::size_t(i)] - guess));
        }
        while (used_ != 0)
            bit(1);
        bytes({0xff, 0xd9});
        return out_;
    }

private:
    void bytes(std::initializer_list<int> values) {
        for (const int v : values)
            out_.push_back(std::byte(v));
    }
    void put(int difference) {
        if (difference == -32768) return code(16);
        int category = 0;
        while (std::abs(difference) >> category)
            ++category;
        code(category);
        const int extra = difference < 0 ? difference + (1 << category) - 1 : difference;
        for (int i = category; i-- > 0;)
            bit(extra >> i & 1);
    }
    void code(int category) {
        if (codes_ == Codes::even) {
            for (int i = 5; i-- > 0;)
                bit(category >> i & 1);
            return;
        }
        for (int i = 0; i < category; ++i)
            bit(1);
        if (category < 16) bit(0);
    }
    void bit(int b) {
        byte_ = byte_ << 1 | b;
        if (++used_ < 8) return;
        bytes({byte_ & 255});
        if ((byte_ & 255) == 255) bytes({0});
        byte_ = used_ = 0;
    }
    int width_, components_, predictor_, precision_;
    Codes codes_;
    Bytes out_;
    int byte_ = 0, used_ = 0;
};

inline std::vector<std::uint16_t> noise(std::size_t count, int bits, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<std::uint16_t> samples;
    for (std::size_t i = 0; i < count; ++i)
        samples.push_back(std::uint16_t(random() & ((1u << bits) - 1)));
    return samples;
}

} // namespace kelvaro::test
