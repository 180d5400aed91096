#include "platform/raw/SampleTiles.h"

#include "platform/raw/LosslessJpeg.h"
#include "platform/raw/PackedSamples.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <memory>

namespace kelvaro {

namespace {

constexpr int kUncompressed = 1, kJpeg = 7;
// More than any lossless tile takes: incompressible samples with the longest codes.
constexpr std::uint64_t kMaximumBytesPerSample = 5;
constexpr int kRowsAtOnce = 64; // of an uncompressed tile

int countOf(int whole, int part) {
    return (whole + part - 1) / part;
}

// Whether the tiles cover the picture and each may be decoded by itself.
bool isTiled(const DngTags& tags) {
    const TileGrid& grid = tags.tiles;
    if (!(tags.samplesPerPixel == 1 || tags.samplesPerPixel == 3) || !tags.isInteger) return false;
    constexpr int kWidest = 1 << 20; // more would not fit into an int with all channels
    if (grid.width <= 0 || grid.width > kWidest || grid.height <= 0) return false;
    const auto tiles = std::size_t(countOf(tags.width, grid.width)) *
                       std::size_t(countOf(tags.height, grid.height));
    return grid.offsets.size() == tiles && grid.counts.size() == tiles;
}

void linearise(const std::vector<std::uint16_t>& table, const TileSamples& tile) {
    if (table.empty()) return;
    for (int y = 0; y < tile.height; ++y) {
        std::uint16_t* row = tile.first + y * tile.stride;
        for (int x = 0; x < tile.width; ++x)
            row[x] = table[std::min<std::size_t>(row[x], table.size() - 1)];
    }
}

// One picture's parts, each a task of its own.
class Decoding {
public:
    Decoding(const DngTags& tags, const ReadAt& read, std::uint16_t* samples)
        : tags_(tags), read_(read), samples_(samples) {}

    // False when the tile is damaged or unusual.
    bool lossless(std::size_t tile) const {
        const TileGrid& grid = tags_.tiles;
        const std::uint64_t bytes = grid.counts[tile];
        const std::uint64_t most = 4096 + kMaximumBytesPerSample * std::uint64_t(each_) *
                                              std::uint64_t(grid.width) *
                                              std::uint64_t(grid.height);
        if (bytes > most) return false;
        const auto coded = std::make_unique_for_overwrite<std::byte[]>(bytes);
        const TileSamples target = part(tile, 0, grid.height);
        const bool isSound = read_(grid.offsets[tile], {coded.get(), bytes}) == bytes &&
                             decodeLosslessJpeg({coded.get(), bytes}, each_ * grid.width, target);
        if (isSound) linearise(tags_.linearisation, target);
        return isSound;
    }

    // Rows of the tile from `top` on.
    bool plain(std::size_t tile, int top) const {
        const TileGrid& grid = tags_.tiles;
        const TileSamples target = part(tile, top, kRowsAtOnce);
        if (target.height <= 0) return true;
        const std::size_t rowBytes = packedRowBytes(each_ * grid.width, tags_.bitsPerSample),
                          bytes = rowBytes * std::size_t(target.height),
                          from = rowBytes * std::size_t(top);
        if (from + bytes > grid.counts[tile]) return false;
        if (isStored(target)) {
            const std::span samples(target.first, bytes / sizeof *target.first);
            if (read_(grid.offsets[tile] + from, std::as_writable_bytes(samples)) != bytes)
                return false;
            linearise(tags_.linearisation, target);
            return true;
        }
        const auto packed = std::make_unique_for_overwrite<std::byte[]>(bytes);
        if (read_(grid.offsets[tile] + from, {packed.get(), bytes}) != bytes) return false;
        for (int y = 0; y < target.height; ++y) {
            unpackRow({packed.get() + rowBytes * std::size_t(y), rowBytes}, tags_.bitsPerSample,
                      tags_.isBigEndian, target.width, target.first + y * target.stride);
        }
        linearise(tags_.linearisation, target);
        return true;
    }

private:
    // Whether rows of the file are what they become in memory, without gaps.
    bool isStored(const TileSamples& target) const {
        const bool isOwnOrder = tags_.isBigEndian == (std::endian::native == std::endian::big);
        return tags_.bitsPerSample == 16 && isOwnOrder && target.stride == target.width &&
               target.width == each_ * tags_.tiles.width;
    }

    // What the picture has of up to `rows` rows of a tile.
    TileSamples part(std::size_t tile, int top, int rows) const {
        const TileGrid& grid = tags_.tiles;
        const int across = countOf(tags_.width, grid.width);
        const int left = int(tile) % across * grid.width,
                  y = int(tile) / across * grid.height + top;
        const std::ptrdiff_t stride = std::ptrdiff_t(each_) * tags_.width;
        return {samples_ + y * stride + each_ * left, stride,
                each_ * std::min(grid.width, tags_.width - left),
                std::min({rows, grid.height - top, tags_.height - y})};
    }

    const DngTags& tags_;
    const ReadAt& read_;
    std::uint16_t* samples_;
    const int each_ = tags_.samplesPerPixel;
};

} // namespace

std::optional<StoredSamples> decodeTiles(const DngTags& tags, const ReadAt& read,
                                         const Cancellation* cancellation) {
    const bool isPlain =
        tags.compression == kUncompressed && tags.bitsPerSample >= 8 && tags.bitsPerSample <= 16;
    if (!isTiled(tags) || !(isPlain || tags.compression == kJpeg)) return std::nullopt;
    StoredSamples samples(std::size_t(tags.samplesPerPixel) * std::size_t(tags.width) *
                          std::size_t(tags.height));
    const Decoding decoding(tags, read, samples.data());
    const int parts = isPlain ? countOf(std::min(tags.tiles.height, tags.height), kRowsAtOnce) : 1;
    std::atomic<bool> isSound{true};
    tbb::parallel_for(
        std::size_t(0), tags.tiles.offsets.size() * std::size_t(parts), [&](std::size_t i) {
            if (!isSound) return;
            const std::size_t tile = i / std::size_t(parts);
            const int top = int(i % std::size_t(parts)) * kRowsAtOnce;
            const bool isStopped = cancellation && cancellation->isCancelled();
            if (isStopped || !(isPlain ? decoding.plain(tile, top) : decoding.lossless(tile)))
                isSound = false;
        });
    if (!isSound) return std::nullopt;
    return samples;
}

} // namespace kelvaro
