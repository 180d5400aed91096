// What people who hear the window learn of the grid: a list whose items are the photos, by name,
// with what their badges say, whether they are selected and which one has the keyboard.
#pragma once

#include "ui/controls/ItemAccess.h"
#include "ui/grid/GridView.h"

namespace kelvaro {

class GridAccess final : public ItemsAccess {
public:
    explicit GridAccess(GridView* grid);

    // Makes Qt ask us for grids; may be called often.
    static void install();

    int childCount() const override;
    QAccessibleInterface* focusChild() const override;

private:
    ItemAccess* makeItem(int index) const override;

    GridView* grid_;
};

} // namespace kelvaro
