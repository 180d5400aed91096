// Where the cells and headings of the grid stand: rows of square cells under the heading of their
// group. Positions are logical pixels of the whole content, y down from its top. Groups are kept as
// running sums, so that a hundred thousand photos cost a binary search. Plain value, no widgets.
#pragma once

#include <QRect>
#include <QSize>

#include <optional>
#include <vector>

namespace kelvaro {

// Cells `first` up to but not including `last`.
struct CellRange {
    int first = 0, last = 0;
    bool isEmpty() const { return first >= last; }
    bool operator==(const CellRange&) const = default;
};

class GridLayout {
public:
    static constexpr int gap = 6, margin = 16, headingHeight = 40, groupGap = 16;

    enum class Step { left, right, up, down, pageUp, pageDown, home, end };

    GridLayout() = default;
    // `groupStarts` are the first cells of the groups, ascending from 0; empty for one group
    // without a heading. Cells are about `wantedCell` wide: rows fill the width exactly.
    GridLayout(int count, std::vector<int> groupStarts, int width, int wantedCell);

    int count() const { return count_; }
    int columns() const { return columns_; }
    int cellSize() const { return cell_; }
    int contentHeight() const { return height_; }
    int groupCount() const { return static_cast<int>(starts_.size()); }

    QRect cellRect(int index) const;
    // The heading across the whole width; empty without headings.
    QRect headingRect(int group) const;
    // Where the group ends, its trailing gap included.
    int groupBottom(int group) const;
    CellRange groupCells(int group) const;

    int groupOf(int index) const;
    // The group at height y; the nearest one outside the content. There must be a cell.
    int groupAt(int y) const;
    std::optional<int> cellAt(QPoint point) const;
    // The cells of all rows that touch the heights from `top` to `bottom`.
    CellRange cellsBetween(int top, int bottom) const;
    // The cells that touch the rectangle, in ascending order of rows.
    std::vector<CellRange> cellsIn(const QRect& area) const;
    // The cell that a key leads to from `index`; up and down keep the column across groups. A page
    // is as many rows as fit into `pageHeight`.
    int stepped(int index, Step step, int pageHeight) const;

private:
    int rowsOf(int group) const;
    int firstRowTop(int group) const;
    // The cell in the group's row (counted from its end for negative rows) nearest to the column.
    int cellInRow(int group, int row, int column) const;

    int count_ = 0, width_ = 0, columns_ = 1, cell_ = 1, height_ = 0;
    bool hasHeadings_ = false;
    std::vector<int> starts_;
    std::vector<int> tops_; // of each group's heading
};

} // namespace kelvaro
