#include "ui/controls/ItemAccess.h"

#include <QWindow>

namespace kelvaro {

QWindow* ItemAccess::window() const {
    return widget_ ? widget_->window()->windowHandle() : nullptr;
}

QAccessibleInterface* ItemAccess::parent() const {
    return QAccessible::queryAccessibleInterface(widget_);
}

ItemsAccess::~ItemsAccess() {
    for (const auto& [index, id] : made_)
        QAccessible::deleteAccessibleInterface(id);
}

QAccessibleInterface* ItemsAccess::child(int index) const {
    if (index < 0 || index >= childCount()) return nullptr;
    if (const auto known = made_.find(index); known != made_.end())
        return QAccessible::accessibleInterface(known->second);
    ItemAccess* item = makeItem(index);
    made_[index] = QAccessible::registerAccessibleInterface(item);
    return item;
}

int ItemsAccess::indexOfChild(const QAccessibleInterface* child) const {
    const auto* item = dynamic_cast<const ItemAccess*>(child);
    return item ? item->index() : -1;
}

} // namespace kelvaro
