#include "ui/grid/GridLayout.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <numeric>

namespace kelvaro {
namespace {

using Step = GridLayout::Step;

// 3 columns of 96 px: 16 + 96 + 6 + 96 + 6 + 96 + 16 = 332.
GridLayout twoDays() {
    return GridLayout(9, {0, 5}, 332, 96); // days of 5 and 4 photos
}

TEST(GridLayout, StandsInRowsUnderHeadings) {
    const GridLayout grid = twoDays();
    EXPECT_EQ(grid.columns(), 3);
    EXPECT_EQ(grid.cellSize(), 96);
    EXPECT_EQ(grid.headingRect(0), QRect(0, 0, 332, 40));
    EXPECT_EQ(grid.cellRect(0), QRect(16, 40, 96, 96));
    EXPECT_EQ(grid.cellRect(4), QRect(118, 142, 96, 96));
    // Two rows of 96 with 6 between, 16 after: the next heading is at 40 + 198 + 16.
    EXPECT_EQ(grid.headingRect(1).top(), 254);
    EXPECT_EQ(grid.cellRect(5), QRect(16, 294, 96, 96));
    EXPECT_EQ(grid.contentHeight(), 508);
}

TEST(GridLayout, KeysMoveByRowsAndAcrossDays) {
    const GridLayout grid = twoDays();
    struct Move {
        int from;
        Step step;
        int to;
    };
    const Move table[] = {{0, Step::right, 1}, {0, Step::left, 0},  {4, Step::right, 5},
                          {1, Step::down, 4},  {2, Step::down, 4},  {4, Step::down, 6},
                          {6, Step::up, 4},    {7, Step::up, 4},    {5, Step::up, 3},
                          {8, Step::down, 8},  {8, Step::right, 8}, {3, Step::home, 0},
                          {3, Step::end, 8},   {1, Step::up, 1},    {8, Step::pageUp, 0}};
    for (const Move& move : table)
        EXPECT_EQ(grid.stepped(move.from, move.step, 600), move.to) << move.from;
}

TEST(GridLayout, PointsAndBandsHitCellsAlone) {
    const GridLayout grid = twoDays();
    EXPECT_EQ(grid.cellAt({16, 40}), 0);
    EXPECT_EQ(grid.cellAt({15, 40}), std::nullopt);
    EXPECT_EQ(grid.cellAt({113, 60}), std::nullopt);  // between two columns
    EXPECT_EQ(grid.cellAt({60, 20}), std::nullopt);   // a heading
    EXPECT_EQ(grid.cellAt({300, 200}), std::nullopt); // behind the day's last photo
    EXPECT_EQ(grid.cellAt({60, 1000}), std::nullopt);
    const auto band = grid.cellsIn(QRect(QPoint(100, 100), QPoint(130, 300)));
    const std::vector<CellRange> expected{{0, 2}, {3, 5}, {5, 7}};
    EXPECT_EQ(band, expected);
}

TEST(GridLayout, HasRoomForNothingAndForVeryNarrowWindows) {
    EXPECT_EQ(GridLayout(0, {}, 800, 100).cellsBetween(0, 1000), CellRange{});
    EXPECT_EQ(GridLayout(0, {}, 800, 100).cellAt({5, 5}), std::nullopt);
    const GridLayout narrow(3, {0}, 10, 500);
    EXPECT_EQ(narrow.columns(), 1);
    EXPECT_GT(narrow.cellSize(), 0);
}

RC_GTEST_PROP(GridLayout, FindsEveryCellWhereItStands, ()) {
    const int count = *rc::gen::inRange(1, 400);
    std::vector<int> starts{0};
    while (starts.back() + 40 < count && *rc::gen::inRange(0, 3) > 0)
        starts.push_back(starts.back() + *rc::gen::inRange(1, 40));
    const GridLayout grid(count, starts, *rc::gen::inRange(60, 1500), *rc::gen::inRange(20, 600));
    const int index = *rc::gen::inRange(0, count);
    const QRect cell = grid.cellRect(index);
    RC_ASSERT(grid.cellAt(cell.center()) == index);
    const CellRange row = grid.cellsBetween(cell.top(), cell.bottom());
    RC_ASSERT(row.first <= index && index < row.last);
    RC_ASSERT(row.last - row.first <= grid.columns());
    RC_ASSERT(cell.right() < 1500 && grid.contentHeight() > cell.bottom());
}

} // namespace
} // namespace kelvaro
