// What people who hear the window learn of the grid: a list whose items are the photos, by name,
// with what their badges say, whether they are selected and which one has the keyboard.
#pragma once

#include "ui/grid/GridView.h"

#include <QAccessibleWidget>

#include <unordered_map>

namespace kelvaro {

class GridAccess final : public QAccessibleWidget {
public:
    explicit GridAccess(GridView* grid);
    ~GridAccess() override;

    // Makes Qt ask us for grids; may be called often.
    static void install();

    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    QAccessibleInterface* focusChild() const override;
    int indexOfChild(const QAccessibleInterface* child) const override;

private:
    GridView* grid_;
    mutable std::unordered_map<int, QAccessible::Id> made_; // only items that were asked for
};

} // namespace kelvaro
