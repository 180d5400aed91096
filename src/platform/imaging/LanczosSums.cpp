#include "platform/imaging/LanczosSums.h"

#include "base/Require.h"
#include "platform/ImageSpace.h"
#include "platform/imaging/RowOperations.h"

#include <algorithm>

namespace kelvaro {

namespace {

// Added to all lines at a time: long enough that rows stream in, few enough that they stay cached.
constexpr int kColumns = 256;

struct Axis {
    const std::int32_t* first; // of the tile's outputs
    const float* weights;
    int taps, count;
};

Axis partOf(const FilterTaps& taps, int offset, int count) {
    return {taps.first.data() + offset,
            taps.weights.data() + std::size_t(offset) * std::size_t(taps.taps), taps.taps, count};
}

Axis columnsOf(const LanczosTables& tables, const PixelRect& output) {
    return partOf(tables.columns, output.x - tables.output.x, output.width);
}

Axis linesOf(const LanczosTables& tables, const PixelRect& output) {
    return partOf(tables.lines, output.y - tables.output.y, output.height);
}

// Positions never decrease, so the ends of an axis bound what it reads.
int reach(const Axis& axis) {
    return axis.first[axis.count - 1] + axis.taps - axis.first[0];
}

} // namespace

LanczosSums::LanczosSums(const LanczosTables& tables, const PixelRect& output, bool hasAlpha,
                         TilePool& pool)
    : tables_(tables), output_(output), pool_(pool) {
    const Axis columns = columnsOf(tables, output), lines = linesOf(tables, output);
    input_ = {columns.first[0], lines.first[0], reach(columns), reach(lines)};
    sums_ = Tile(pool, {input_.x, 0, input_.width, output.height}, hasAlpha);
    for (int plane = 0; plane < (hasAlpha ? 4 : 3); ++plane)
        for (int line = 0; line < output.height; ++line)
            rows::fill(sums_.view().row(plane, line), 0, std::size_t(input_.width));
}

void LanczosSums::add(const ConstTileView& block) {
    KELVARO_REQUIRE(block.hasAlpha() == sums_.view().hasAlpha() && input_.contains(block.rect));
    struct Share {
        int line, row, rows; // of the sums; lowest row of the block from the top; their number
        const float* weights;
    };
    std::vector<Share> shares;
    const Axis lines = linesOf(tables_, output_);
    for (int line = 0; line < lines.count; ++line) {
        const int first = std::max(lines.first[line], block.rect.y);
        const int end = std::min(lines.first[line] + lines.taps, block.rect.top());
        if (first < end)
            shares.push_back(
                {line, rowOfLine(block.rect, first), end - first,
                 lines.weights + line * std::ptrdiff_t(lines.taps) + (first - lines.first[line])});
    }
    for (int plane = 0; plane < (block.hasAlpha() ? 4 : 3); ++plane)
        for (int column = 0; column < block.rect.width; column += kColumns)
            for (std::size_t i = 0; i < shares.size();) {
                const Share& share = shares[i];
                float* to[2];
                const float* weights[2];
                int together = 0; // neighbouring lines that read the same rows
                for (; together < 2 && i < shares.size() && shares[i].row == share.row &&
                       shares[i].rows == share.rows;
                     ++together, ++i) {
                    to[together] = sums_.view().row(plane, shares[i].line) +
                                   (block.rect.x - input_.x) + column;
                    weights[together] = shares[i].weights;
                }
                rows::addRows(to, together, block.row(plane, share.row) + column, -block.stride,
                              weights, share.rows,
                              std::size_t(std::min(kColumns, block.rect.width - column)));
            }
}

void LanczosSums::writeTo(const TileView& out) const {
    KELVARO_REQUIRE(out.rect == output_);
    const Axis columns = columnsOf(tables_, output_);
    std::vector<std::int32_t> first(columns.first, columns.first + columns.count);
    for (std::int32_t& position : first)
        position -= input_.x;
    const rows::LineFilter filter{first.data(), columns.weights, columns.taps,
                                  std::size_t(columns.count)};
    const Tile scratch(pool_, {0, 0, int(rows::lineScratch(filter)), 1}, false);
    for (int plane = 0; plane < (out.hasAlpha() ? 4 : 3); ++plane)
        for (int line = 0; line < output_.height; line += rows::kFilterLines) {
            const float* from[rows::kFilterLines];
            float* to[rows::kFilterLines];
            for (int i = 0; i < rows::kFilterLines; ++i) {
                const int last = std::min(line + i, output_.height - 1);
                from[i] = sums_.view().row(plane, last);
                to[i] = line + i == last ? out.row(plane, output_.height - 1 - last) : nullptr;
            }
            rows::filterLines(to, from, filter, scratch.view().row(0, 0));
        }
}

} // namespace kelvaro
