#include "platform/raw/LosslessTiles.h"

#include "platform/raw/LosslessJpeg.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <atomic>

namespace kelvaro {

namespace {

constexpr int kJpeg = 7;
// More than any tile takes: incompressible samples with the longest codes.
constexpr std::uint64_t kMaximumBytesPerSample = 5;

// Whether the tiles cover the picture and each may be decoded by itself.
bool isTiled(const DngTags& tags) {
    const TileGrid& grid = tags.tiles;
    if (tags.compression != kJpeg || !(tags.samplesPerPixel == 1 || tags.samplesPerPixel == 3))
        return false;
    if (grid.width <= 0 || grid.height <= 0) return false;
    const auto across = std::size_t((tags.width + grid.width - 1) / grid.width);
    const auto down = std::size_t((tags.height + grid.height - 1) / grid.height);
    return grid.offsets.size() == across * down && grid.counts.size() == across * down;
}

void linearise(const std::vector<std::uint16_t>& table, const TileSamples& tile) {
    for (int y = 0; y < tile.height; ++y) {
        std::uint16_t* row = tile.first + y * tile.stride;
        for (int x = 0; x < tile.width; ++x)
            row[x] = table[std::min<std::size_t>(row[x], table.size() - 1)];
    }
}

} // namespace

std::optional<std::vector<std::uint16_t>>
decodeLosslessTiles(const DngTags& tags, const ReadAt& read, const Cancellation* cancellation) {
    if (!isTiled(tags)) return std::nullopt;
    const TileGrid& grid = tags.tiles;
    const int each = tags.samplesPerPixel, rowSamples = each * tags.width;
    std::vector<std::uint16_t> samples(std::size_t(rowSamples) * std::size_t(tags.height));
    const int across = (tags.width + grid.width - 1) / grid.width;
    const std::uint64_t limit = 4096 + kMaximumBytesPerSample * std::uint64_t(each) *
                                           std::uint64_t(grid.width) * std::uint64_t(grid.height);
    std::atomic<bool> isSound{true};
    tbb::parallel_for(std::size_t(0), grid.offsets.size(), [&](std::size_t i) {
        if (!isSound) return;
        if ((cancellation && cancellation->isCancelled()) || grid.counts[i] > limit) {
            isSound = false;
            return;
        }
        const int left = int(i) % across * grid.width, top = int(i) / across * grid.height;
        const TileSamples target{samples.data() + std::ptrdiff_t(top) * rowSamples + each * left,
                                 rowSamples, each * std::min(grid.width, tags.width - left),
                                 std::min(grid.height, tags.height - top)};
        std::vector<std::byte> bytes(grid.counts[i]);
        if (read(grid.offsets[i], bytes) != bytes.size() ||
            !decodeLosslessJpeg(bytes, each * grid.width, target)) {
            isSound = false;
            return;
        }
        if (!tags.linearisation.empty()) linearise(tags.linearisation, target);
    });
    if (!isSound) return std::nullopt;
    return samples;
}

} // namespace kelvaro
