#include "ui/grid/GridAccess.h"

#include "ui/Texts.h"

#include <QPointer>
#include <QWindow>

namespace kelvaro {
namespace {

class CellAccess final : public QAccessibleInterface {
public:
    CellAccess(GridView* grid, int index) : grid_(grid), index_(index) {}

    int index() const { return index_; }
    bool isValid() const override { return grid_ && index_ < grid_->content().count(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return grid_ ? grid_->window()->windowHandle() : nullptr; }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(grid_);
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    void setText(QAccessible::Text, const QString&) override {}

    QString text(QAccessible::Text kind) const override {
        if (!isValid() || kind != QAccessible::Name) return {};
        const GridCell cell = grid_->content().cell(index_);
        QStringList parts{cell.name};
        if (cell.isRaw) parts << words("RAW");
        if (cell.isFavorite) parts << words("Favorite");
        if (cell.isEdited) parts << words("Edited");
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
    QPointer<GridView> grid_;
    int index_;
};

QAccessibleInterface* gridInterface(const QString&, QObject* object) {
    auto* grid = dynamic_cast<GridView*>(object);
    return grid ? new GridAccess(grid) : nullptr;
}

} // namespace

GridAccess::GridAccess(GridView* grid) : QAccessibleWidget(grid, QAccessible::List), grid_(grid) {}

GridAccess::~GridAccess() {
    for (const auto& [index, id] : made_)
        QAccessible::deleteAccessibleInterface(id);
}

void GridAccess::install() {
    QAccessible::removeFactory(gridInterface);
    QAccessible::installFactory(gridInterface);
}

int GridAccess::childCount() const {
    return grid_->content().count();
}

QAccessibleInterface* GridAccess::child(int index) const {
    if (index < 0 || index >= childCount()) return nullptr;
    if (const auto known = made_.find(index); known != made_.end())
        return QAccessible::accessibleInterface(known->second);
    auto* cell = new CellAccess(grid_, index);
    made_[index] = QAccessible::registerAccessibleInterface(cell);
    return cell;
}

QAccessibleInterface* GridAccess::focusChild() const {
    return child(grid_->selection().current());
}

int GridAccess::indexOfChild(const QAccessibleInterface* child) const {
    const auto* cell = dynamic_cast<const CellAccess*>(child);
    return cell ? cell->index() : -1;
}

} // namespace kelvaro
