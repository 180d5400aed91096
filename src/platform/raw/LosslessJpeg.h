// Lossless JPEG (ITU-T T.81, process 14) as DNG files hold their mosaics in tiles: several tiles
// can be decoded at once, which a file's own library does one after another.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvaro {

// Where a tile's samples go: `width` of every decoded row and `height` rows are kept.
struct TileSamples {
    std::uint16_t* first = nullptr;
    std::ptrdiff_t stride = 0;
    int width = 0, height = 0;
};

// Decodes one tile whose rows hold `rowSamples` samples, all components side by side. False when
// the data are damaged, break off, or use what no camera does (restart intervals, subsampling,
// other row lengths); some of the target is then overwritten. Any number of threads.
bool decodeLosslessJpeg(std::span<const std::byte> data, int rowSamples, const TileSamples& target);

} // namespace kelvaro
