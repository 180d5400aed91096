#include "platform/raw/LosslessJpeg.h"
#include "platform/raw/SampleTiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace kelvaro {
namespace {

using Bytes = std::vector<std::byte>;

// Writes T.81's lossless process with one table: categories 0 … 16 as codes of five bits, so that
// every difference has a place.
class Encoder {
public:
    Encoder(int width, int height, int components, int predictor, int precision)
        : width_(width), components_(components), predictor_(predictor), precision_(precision) {
        bytes({0xff, 0xd8, 0xff, 0xc4, 0, 2 + 17 + 17, 0});
        for (int length = 1; length <= 16; ++length)
            bytes({length == 5 ? 17 : 0});
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
        for (int i = 5; i-- > 0;)
            bit(category >> i & 1);
    }
    void bit(int b) {
        byte_ = byte_ << 1 | b;
        if (++used_ < 8) return;
        bytes({byte_ & 255});
        if ((byte_ & 255) == 255) bytes({0});
        byte_ = used_ = 0;
    }
    int width_, components_, predictor_, precision_;
    Bytes out_;
    int byte_ = 0, used_ = 0;
};

std::vector<std::uint16_t> noise(std::size_t count, int bits, unsigned seed) {
    std::mt19937 random(seed);
    std::vector<std::uint16_t> samples;
    for (std::size_t i = 0; i < count; ++i)
        samples.push_back(std::uint16_t(random() & ((1u << bits) - 1)));
    return samples;
}

TEST(LosslessJpeg, DecodesWhatTheStandardEncodes) {
    for (int predictor = 1; predictor <= 7; ++predictor) {
        for (int components = 1; components <= 4; ++components) {
            for (const int bits : {8, 12, 16}) {
                const int width = 13, height = 7, row = width * components;
                const auto samples = noise(std::size_t(row * height), bits, unsigned(predictor));
                Encoder encoder(width, height, components, predictor, bits);
                const Bytes data = encoder.encode(samples);
                // A smaller part is wanted, in rows with room behind them.
                const int keptWidth = row - 2, keptHeight = height - 1, stride = row + 3;
                std::vector<std::uint16_t> got(std::size_t(stride * height), 7);
                ASSERT_TRUE(
                    decodeLosslessJpeg(data, row, {got.data(), stride, keptWidth, keptHeight}));
                for (int y = 0; y < height; ++y) {
                    for (int x = 0; x < stride; ++x) {
                        const bool isKept = x < keptWidth && y < keptHeight;
                        const auto want = isKept ? samples[std::size_t(y * row + x)] : 7;
                        ASSERT_EQ(got[std::size_t(y * stride + x)], want)
                            << predictor << ' ' << components << ' ' << bits;
                    }
                }
            }
        }
    }
}

TEST(LosslessJpeg, RefusesDamage) {
    const int width = 40, height = 30;
    const auto samples = noise(std::size_t(width * height), 14, 1);
    const Bytes good = Encoder(width, height, 1, 1, 14).encode(samples);
    std::vector<std::uint16_t> got(samples.size());
    const TileSamples target{got.data(), width, width, height};
    ASSERT_TRUE(decodeLosslessJpeg(good, width, target));
    EXPECT_FALSE(decodeLosslessJpeg(good, width + 1, target)); // another row length
    for (std::size_t cut = 0; cut + 8 < good.size(); cut += 11)
        EXPECT_FALSE(decodeLosslessJpeg(std::span(good).first(cut), width, target)) << cut;
    // Anything may come out of a flipped bit, but it ends, inside the target.
    for (std::size_t i = 0; i < good.size(); i += 3) {
        Bytes bad = good;
        bad[i] ^= std::byte{0x24};
        (void)decodeLosslessJpeg(bad, width, target);
    }
}

// Tiles that reach over the picture's edges, of mosaics and of pictures with all colours.
TEST(SampleTiles, FillThePicture) {
    for (const int each : {1, 3}) {
        constexpr int kWidth = 50, kHeight = 34, kTile = 16;
        DngTags tags;
        tags.width = kWidth, tags.height = kHeight;
        tags.samplesPerPixel = each;
        tags.compression = 7;
        tags.tiles.width = tags.tiles.height = kTile;
        Bytes file(7);
        std::vector<std::uint16_t> want(std::size_t(kWidth * kHeight * each));
        for (int top = 0; top < kHeight; top += kTile) {
            for (int left = 0; left < kWidth; left += kTile) {
                const auto samples =
                    noise(std::size_t(kTile * kTile * each), 14, unsigned(top * 100 + left));
                for (int y = 0; y < std::min(kTile, kHeight - top); ++y) {
                    const int count = each * std::min(kTile, kWidth - left);
                    std::copy_n(samples.begin() + y * kTile * each, count,
                                want.begin() + ((top + y) * kWidth + left) * each);
                }
                const Bytes tile = Encoder(kTile, kTile, each, 1, 14).encode(samples);
                tags.tiles.offsets.push_back(file.size());
                tags.tiles.counts.push_back(tile.size());
                file.insert(file.end(), tile.begin(), tile.end());
            }
        }
        const ReadAt read = [&](std::uint64_t offset, std::span<std::byte> out) {
            const auto from = std::span(file).subspan(std::size_t(offset)).first(out.size());
            std::copy(from.begin(), from.end(), out.begin());
            return out.size();
        };
        const auto got = decodeTiles(tags, read, nullptr);
        ASSERT_TRUE(got) << each;
        EXPECT_TRUE(std::equal(want.begin(), want.end(), got->data(), got->data() + got->size()))
            << each;
    }
}

} // namespace
} // namespace kelvaro
