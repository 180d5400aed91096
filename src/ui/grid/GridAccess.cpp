#include "ui/grid/GridAccess.h"

#include "ui/Texts.h"

namespace kelvaro {
namespace {

class CellAccess final : public ItemAccess {
public:
    CellAccess(GridView* grid, int index) : ItemAccess(grid, index), grid_(grid), index_(index) {}

    bool isValid() const override { return widget() && index_ < grid_->content().count(); }

    QString text(QAccessible::Text kind) const override {
        if (!isValid() || kind != QAccessible::Name) return {};
        const GridCell cell = grid_->content().cell(index_);
        QStringList parts{cell.name};
        if (cell.isRaw) parts << words("RAW");
        if (cell.isFavorite) parts << words("Favorite");
        if (cell.isEdited) parts << words("Edited");
        if (cell.isUnreadable) parts << words("Can't be shown");
        return parts.join(", ");
    }
    QRect rect() const override {
        if (!isValid()) return {};
        const QRect cell = grid_->cellOnScreen(index_);
        return {grid_->viewport()->mapToGlobal(cell.topLeft()), cell.size()};
    }
    QAccessible::State state() const override {
        QAccessible::State state;
        if (!isValid()) return state;
        state.selectable = state.focusable = state.multiSelectable = true;
        state.selected = grid_->selection().contains(index_);
        state.focused = grid_->hasFocus() && grid_->selection().current() == index_;
        state.offscreen = !grid_->viewport()->rect().intersects(grid_->cellOnScreen(index_));
        return state;
    }

private:
    GridView* const grid_;
    const int index_;
};

QAccessibleInterface* gridInterface(const QString&, QObject* object) {
    auto* grid = dynamic_cast<GridView*>(object);
    return grid ? new GridAccess(grid) : nullptr;
}

} // namespace

GridAccess::GridAccess(GridView* grid) : ItemsAccess(grid, QAccessible::List), grid_(grid) {}

void GridAccess::install() {
    QAccessible::removeFactory(gridInterface);
    QAccessible::installFactory(gridInterface);
}

int GridAccess::childCount() const {
    return grid_->content().count();
}

ItemAccess* GridAccess::makeItem(int index) const {
    return new CellAccess(grid_, index);
}

QAccessibleInterface* GridAccess::focusChild() const {
    return child(grid_->selection().current());
}

} // namespace kelvaro
