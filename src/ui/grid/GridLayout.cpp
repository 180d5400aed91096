#include "ui/grid/GridLayout.h"

#include "base/Require.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

GridLayout::GridLayout(int count, std::vector<int> groupStarts, int width, int wantedCell)
    : count_(count),
      width_(width),
      hasHeadings_(!groupStarts.empty()),
      starts_(std::move(groupStarts)) {
    KELVARO_REQUIRE(starts_.empty() || starts_.front() == 0);
    const int room = std::max(1, width - 2 * margin);
    const int wanted = std::clamp(wantedCell, 1, room);
    columns_ = std::max(1, static_cast<int>(std::lround(double(room + gap) / (wanted + gap))));
    cell_ = std::max(1, (room - gap * (columns_ - 1)) / columns_);
    if (starts_.empty() && count_ > 0) starts_ = {0};
    int top = hasHeadings_ ? 0 : margin;
    tops_.reserve(starts_.size());
    for (int group = 0; group < groupCount(); ++group) {
        tops_.push_back(top);
        top = groupBottom(group);
    }
    height_ = top;
}

int GridLayout::rowsOf(int group) const {
    const CellRange cells = groupCells(group);
    return (cells.last - cells.first + columns_ - 1) / columns_;
}

int GridLayout::firstRowTop(int group) const {
    return tops_[static_cast<size_t>(group)] + (hasHeadings_ ? headingHeight : 0);
}

int GridLayout::groupBottom(int group) const {
    return firstRowTop(group) + rowsOf(group) * (cell_ + gap) - gap + groupGap;
}

CellRange GridLayout::groupCells(int group) const {
    const auto at = static_cast<size_t>(group);
    return {starts_[at], at + 1 < starts_.size() ? starts_[at + 1] : count_};
}

QRect GridLayout::headingRect(int group) const {
    if (!hasHeadings_) return {};
    return {0, tops_[static_cast<size_t>(group)], width_, headingHeight};
}

QRect GridLayout::cellRect(int index) const {
    const int group = groupOf(index);
    const int inGroup = index - groupCells(group).first;
    return {margin + inGroup % columns_ * (cell_ + gap),
            firstRowTop(group) + inGroup / columns_ * (cell_ + gap), cell_, cell_};
}

int GridLayout::groupOf(int index) const {
    const auto after = std::ranges::upper_bound(starts_, index);
    return static_cast<int>(after - starts_.begin()) - 1;
}

int GridLayout::groupAt(int y) const {
    const auto after = std::ranges::upper_bound(tops_, y);
    return std::max(0, static_cast<int>(after - tops_.begin()) - 1);
}

std::optional<int> GridLayout::cellAt(QPoint point) const {
    const std::vector<CellRange> touched = cellsIn(QRect(point, QSize(1, 1)));
    return touched.empty() ? std::nullopt : std::optional(touched.front().first);
}

CellRange GridLayout::cellsBetween(int top, int bottom) const {
    if (count_ == 0 || bottom < top) return {};
    const int firstGroup = groupAt(top), lastGroup = groupAt(bottom);
    const int pitch = cell_ + gap;
    const auto rowAt = [&](int group, int y) {
        return std::clamp((y - firstRowTop(group)) / pitch, 0, rowsOf(group));
    };
    const CellRange above = groupCells(firstGroup), below = groupCells(lastGroup);
    const int first = std::min(
        above.last,
        above.first + rowAt(firstGroup, std::max(top, firstRowTop(firstGroup))) * columns_);
    if (bottom < firstRowTop(lastGroup)) return {first, std::max(first, below.first)};
    const int last = std::min(below.last, below.first + (rowAt(lastGroup, bottom) + 1) * columns_);
    return {first, std::max(first, last)};
}

std::vector<CellRange> GridLayout::cellsIn(const QRect& area) const {
    std::vector<CellRange> found;
    const CellRange rows = cellsBetween(area.top(), area.bottom());
    const int pitch = cell_ + gap;
    // A column is touched when the area reaches into its cell, not only into the gap beside it.
    const int left = std::max(0, (area.left() - margin + gap) / pitch);
    const int right =
        area.right() < margin ? -1 : std::min(columns_ - 1, (area.right() - margin) / pitch);
    if (left > right) return found;
    for (int index = rows.first; index < rows.last;) {
        const CellRange cells = groupCells(groupOf(index));
        const int rowStart = index - (index - cells.first) % columns_;
        const CellRange row{std::max(rowStart + left, cells.first),
                            std::min({rowStart + right + 1, cells.last, rowStart + columns_})};
        if (!row.isEmpty() && cellRect(row.first).intersects(
                                  QRect(cellRect(row.first).left(), area.top(), 1, area.height())))
            found.push_back(row);
        index = std::min(rowStart + columns_, cells.last);
    }
    return found;
}

int GridLayout::cellInRow(int group, int row, int column) const {
    const CellRange cells = groupCells(group);
    const int rowIndex = row < 0 ? rowsOf(group) + row : row;
    return std::min(cells.first + rowIndex * columns_ + column, cells.last - 1);
}

int GridLayout::stepped(int index, Step step, int pageHeight) const {
    const int group = groupOf(index);
    const int inGroup = index - groupCells(group).first;
    const int row = inGroup / columns_, column = inGroup % columns_;
    switch (step) {
    case Step::left:
        return std::max(0, index - 1);
    case Step::right:
        return std::min(count_ - 1, index + 1);
    case Step::home:
        return 0;
    case Step::end:
        return count_ - 1;
    case Step::up:
        if (row > 0) return cellInRow(group, row - 1, column);
        return group > 0 ? cellInRow(group - 1, -1, column) : index;
    case Step::down:
        if (row + 1 < rowsOf(group)) return cellInRow(group, row + 1, column);
        return group + 1 < groupCount() ? cellInRow(group + 1, 0, column) : index;
    case Step::pageUp:
    case Step::pageDown:
        break;
    }
    const Step one = step == Step::pageUp ? Step::up : Step::down;
    const int origin = cellRect(index).top();
    int reached = index;
    // By rows until the page is used up, so that short groups count for what they take.
    for (;;) {
        const int next = stepped(reached, one, pageHeight);
        if (next == reached || std::abs(cellRect(next).top() - origin) > pageHeight - cell_) break;
        reached = next;
    }
    return reached == index ? stepped(index, one, pageHeight) : reached;
}

} // namespace kelvaro
