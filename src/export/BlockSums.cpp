#include "export/BlockSums.h"

#include <algorithm>
#include <cstdint>

namespace kelvaro {

PixelRect BlockGrid::block(int column, int row) const {
    const int width = std::min(side, size.width), height = std::min(side, size.height);
    return {std::min(column * side, size.width - width), std::min(row * side, size.height - height),
            width, height};
}

namespace {

// A square of a sample fits into 16 bits, and so does the sum of as many samples as a block has
// rows.
static_assert(BlockGrid::side * 255 <= 0xffff);

struct ColumnSums {
    explicit ColumnSums(std::size_t columns) : sum(columns), squares(columns) {}
    std::vector<std::uint16_t> sum;
    std::vector<std::uint32_t> squares;
};

// Of `kRows` rows at once, as the sums take longer to load and store than the samples.
template<int kRows>
void addColumns(const std::uint8_t* __restrict from, std::size_t stride,
                std::uint16_t* __restrict sum, std::uint32_t* __restrict squares,
                std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        std::uint16_t values = 0;
        std::uint32_t squared = 0;
        for (int row = 0; row < kRows; ++row) {
            const std::uint16_t value = from[std::size_t(row) * stride + i];
            values = std::uint16_t(values + value);
            squared += std::uint16_t(value * value);
        }
        sum[i] = std::uint16_t(sum[i] + values);
        squares[i] += squared;
    }
}

// In panels whose sums stay in the first level cache and whose rows are long enough to be fetched
// ahead.
ColumnSums columnsOf(const Bitmap& pixels, const PixelRect& rect) {
    constexpr std::size_t kPanel = 1536;
    constexpr int kRowsTogether = 4;
    const std::size_t stride = pixels.rowBytes();
    const auto columns = std::size_t(3 * rect.width);
    ColumnSums sums(columns);
    for (std::size_t first = 0; first < columns; first += kPanel) {
        const std::size_t count = std::min(kPanel, columns - first);
        auto* sum = sums.sum.data() + first;
        auto* squares = sums.squares.data() + first;
        const auto* from = pixels.row<std::uint8_t>(rect.y) + 3 * rect.x + first;
        int left = rect.height;
        for (; left >= kRowsTogether; left -= kRowsTogether, from += kRowsTogether * stride)
            addColumns<kRowsTogether>(from, stride, sum, squares, count);
        for (; left > 0; --left, from += stride)
            addColumns<1>(from, stride, sum, squares, count);
    }
    return sums;
}

BlockSums blockOf(const ColumnSums& columns, int left, int width) {
    BlockSums sums;
    for (int x = left; x < left + width; ++x)
        for (std::size_t c = 0; c < 3; ++c) {
            const std::size_t i = 3 * std::size_t(x) + c;
            sums[c].sum += columns.sum[i];
            sums[c].squares += columns.squares[i];
        }
    return sums;
}

} // namespace

BlockSums sumsOf(const Bitmap& pixels, const PixelRect& rect) {
    return blockOf(columnsOf(pixels, rect), 0, rect.width);
}

std::vector<BlockSums> rowSumsOf(const Bitmap& pixels, const BlockGrid& grid, int top, int count) {
    const ColumnSums columns = columnsOf(pixels, {0, top, pixels.size.width, count});
    std::vector<BlockSums> sums;
    for (int column = 0; column < grid.columns(); ++column) {
        const PixelRect block = grid.block(column, 0);
        sums.push_back(blockOf(columns, block.x, block.width));
    }
    return sums;
}

void PictureSums::add(const Bitmap& strip, int top) {
    const int bottom = top + strip.size.height;
    for (int row = 0; row < grid_.rows(); ++row) {
        const PixelRect block = grid_.block(0, row);
        const int first = std::max(block.y, top), end = std::min(block.y + block.height, bottom);
        if (first >= end) continue;
        const auto parts = rowSumsOf(strip, grid_, first - top, end - first);
        sums_.with([&](std::vector<BlockSums>& sums) {
            for (std::size_t column = 0; column < parts.size(); ++column)
                for (std::size_t c = 0; c < 3; ++c) {
                    BlockSum& sum = sums[index(int(column), row)][c];
                    sum.sum += parts[column][c].sum;
                    sum.squares += parts[column][c].squares;
                }
        });
    }
}

} // namespace kelvaro
