#include "ui/grid/GridSelection.h"

#include <gtest/gtest.h>

namespace kelvaro {
namespace {

using Mode = GridSelection::Mode;

TEST(GridSelection, FollowsClicksAsEverywhere) {
    struct Click {
        int index;
        Mode mode;
        std::vector<int> selected;
    };
    const Click walk[] = {
        {4, Mode::replace, {4}},      {7, Mode::extend, {4, 5, 6, 7}},
        {2, Mode::extend, {2, 3, 4}}, {9, Mode::toggle, {2, 3, 4, 9}},
        {3, Mode::toggle, {2, 4, 9}}, {1, Mode::replace, {1}},
        {1, Mode::toggle, {}},        {3, Mode::extend, {1, 2, 3}},
    };
    GridSelection selection(10);
    for (const Click& click : walk) {
        selection.choose(click.index, click.mode);
        EXPECT_EQ(selection.indexes(), click.selected) << click.index;
        EXPECT_EQ(selection.selectedCount(), static_cast<int>(click.selected.size()));
        EXPECT_EQ(selection.current(), click.index);
    }
    selection.choose(10, Mode::replace); // not a photo
    EXPECT_EQ(selection.indexes(), (std::vector<int>{1, 2, 3}));
}

TEST(GridSelection, BandsReplaceOrTurnAround) {
    GridSelection before(10);
    before.choose(3, Mode::replace);
    const std::vector<CellRange> band{{2, 5}};
    GridSelection selection(10);
    selection.applyBand(before, band, false);
    EXPECT_EQ(selection.indexes(), (std::vector<int>{2, 3, 4}));
    selection.applyBand(before, band, true);
    EXPECT_EQ(selection.indexes(), (std::vector<int>{2, 4}));
    selection.applyBand(before, {}, true); // the band has shrunk to nothing
    EXPECT_EQ(selection.indexes(), (std::vector<int>{3}));
}

} // namespace
} // namespace kelvaro
