// Draws the rows of the sidebar.
#pragma once

#include "ui/theme/Appearance.h"

#include <QStyledItemDelegate>

namespace kelvaro {

class SidebarDelegate final : public QStyledItemDelegate {
public:
    SidebarDelegate(const Appearance& appearance, QObject* parent)
        : QStyledItemDelegate(parent), appearance_(appearance) {}

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

private:
    const Appearance& appearance_;
};

} // namespace kelvaro
