// What is kept of a rendered picture to compare it with its file read back: the sums of each block
// of 32 × 32 pixels. 8-bit samples, three channels; rows count from the top.
#pragma once

#include "base/Locked.h"
#include "platform/Bitmap.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace kelvaro {

struct BlockSum {
    double sum = 0, squares = 0;
    double mean(int count) const { return sum / count; }
    double deviation(int count) const {
        return std::sqrt(std::max(0.0, squares / count - mean(count) * mean(count)));
    }
};
using BlockSums = std::array<BlockSum, 3>;

// The blocks of a picture. The last ones overlap those before them.
struct BlockGrid {
    static constexpr int side = 32; // pixels; two macro blocks of either codec

    explicit BlockGrid(PixelSize picture) : size(picture) {}
    int columns() const { return (size.width + side - 1) / side; }
    int rows() const { return (size.height + side - 1) / side; }
    PixelRect block(int column, int row) const; // y counts down
    PixelSize size;
};

// Over a rectangle of at most a block's size, whose y counts down. Whole numbers, so that sums of
// parts add up exactly.
BlockSums sumsOf(const Bitmap& pixels, const PixelRect& rect);
// Of each block of a row of blocks, of which `pixels` have `count` rows, at most a block's, from
// `top` on.
std::vector<BlockSums> rowSumsOf(const Bitmap& pixels, const BlockGrid& grid, int top, int count);

// Of all blocks of a picture that comes in strips.
class PictureSums {
public:
    explicit PictureSums(PixelSize picture)
        : grid_(picture),
          sums_(std::vector<BlockSums>(std::size_t(grid_.columns()) * std::size_t(grid_.rows()))) {}

    const BlockGrid& grid() const { return grid_; }
    // A strip whose first row is row `top` of the picture; each row once. Any thread.
    void add(const Bitmap& strip, int top);
    // Once all strips have come.
    BlockSums at(int column, int row) const {
        return sums_.with([&](const auto& sums) { return sums[index(column, row)]; });
    }

private:
    std::size_t index(int column, int row) const {
        return std::size_t(row) * std::size_t(grid_.columns()) + std::size_t(column);
    }
    BlockGrid grid_;
    mutable Locked<std::vector<BlockSums>> sums_;
};

} // namespace kelvaro
