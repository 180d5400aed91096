// Lossless JPEG (ITU-T T.81, process 14) as DNG files hold their mosaics in tiles: several tiles
// can be decoded at once, which a file's own library does one after another.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace kelvaro {

// Where a tile's samples go: `width` of every decoded row and `height` rows are kept.
struct TileSamples {
    std::uint16_t* first = nullptr;
    std::ptrdiff_t stride = 0;
    int width = 0, height = 0;
};

// Rows of a lossless JPEG, all components side by side, one after the other. Not sound, or without
// a next row, when the data are damaged, break off, or use what no camera does (restart intervals,
// subsampling). The data outlive this object. One thread at a time.
class LosslessRows {
public:
    explicit LosslessRows(std::span<const std::byte> data);
    ~LosslessRows();
    bool isSound() const;
    int samples() const; // of a row
    int count() const;
    // Valid until the next call; null after the last one and where the data are damaged.
    const std::uint16_t* next();

private:
    struct State;
    std::unique_ptr<State> state_;
    std::vector<std::uint16_t> shifted_;
};

// Decodes one tile whose rows hold `rowSamples` samples, all components side by side. False when
// the data are damaged, break off, or use what no camera does (restart intervals, subsampling,
// other row lengths); some of the target is then overwritten. Any number of threads.
bool decodeLosslessJpeg(std::span<const std::byte> data, int rowSamples, const TileSamples& target);

} // namespace kelvaro
