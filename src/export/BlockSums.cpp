#include "export/BlockSums.h"

#include <algorithm>
#include <cstdint>

namespace kelvaro {

PixelRect BlockGrid::block(int column, int row) const {
    const int width = std::min(side, size.width), height = std::min(side, size.height);
    return {std::min(column * side, size.width - width), std::min(row * side, size.height - height),
            width, height};
}

// Columns are summed first, side by side as they lie in memory. A square of a sample fits into 16
// bits, and so does the sum of as many samples as a block has rows.
BlockSums sumsOf(const Bitmap& pixels, const PixelRect& rect) {
    static_assert(BlockGrid::side * 255 <= 0xffff);
    std::array<std::uint16_t, 3 * BlockGrid::side> sum{};
    std::array<std::uint32_t, 3 * BlockGrid::side> squares{};
    const auto columns = std::size_t(3 * rect.width);
    for (int row = rect.y; row < rect.y + rect.height; ++row) {
        const auto* from = pixels.row<std::uint8_t>(row) + 3 * rect.x;
        for (std::size_t i = 0; i < columns; ++i) {
            const std::uint16_t value = from[i];
            sum[i] = std::uint16_t(sum[i] + value);
            squares[i] += std::uint16_t(value * value);
        }
    }
    BlockSums sums;
    for (std::size_t i = 0; i < columns; ++i) {
        sums[i % 3].sum += sum[i];
        sums[i % 3].squares += squares[i];
    }
    return sums;
}

void PictureSums::add(const Bitmap& strip, int top) {
    const int bottom = top + strip.size.height;
    std::vector<std::pair<std::size_t, BlockSums>> parts;
    for (int row = 0; row < grid_.rows(); ++row) {
        for (int column = 0; column < grid_.columns(); ++column) {
            const PixelRect block = grid_.block(column, row);
            const int first = std::max(block.y, top),
                      end = std::min(block.y + block.height, bottom);
            if (first >= end) break; // as for the whole row of blocks
            parts.emplace_back(index(column, row),
                               sumsOf(strip, {block.x, first - top, block.width, end - first}));
        }
    }
    sums_.with([&](std::vector<BlockSums>& sums) {
        for (const auto& [index, part] : parts)
            for (std::size_t c = 0; c < 3; ++c) {
                sums[index][c].sum += part[c].sum;
                sums[index][c].squares += part[c].squares;
            }
    });
}

} // namespace kelvaro
