#include "platform/raw/LosslessJpeg.h"
#include "platform/raw/LosslessEncoder.h"
#include "platform/raw/SampleTiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace kelvaro {
namespace {

using test::Bytes;
using test::noise;
using Encoder = test::LosslessEncoder;

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

// More than is read at a time, with codes of every length: the longest take 31 bits with their
// difference, and the one difference without bits is among them.
TEST(LosslessJpeg, DecodesLongDataAndLongCodes) {
    for (const auto codes : {Encoder::Codes::even, Encoder::Codes::uneven}) {
        for (const int components : {1, 2, 3}) {
            const int width = 173, height = 211, row = width * components;
            auto samples = noise(std::size_t(row * height), 16, 5);
            for (std::size_t i = 0; i + 1000 < samples.size(); i += 1000)
                samples[i + std::size_t(components)] = std::uint16_t(samples[i] - 0x8000);
            const Bytes data = Encoder(width, height, components, 1, 16, codes).encode(samples);
            std::vector<std::uint16_t> got(samples.size());
            ASSERT_TRUE(decodeLosslessJpeg(data, row, {got.data(), row, row, height}));
            EXPECT_EQ(got, samples) << components;
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
