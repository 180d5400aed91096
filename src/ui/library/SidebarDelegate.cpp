#include "ui/library/SidebarDelegate.h"

#include "ui/library/SidebarModel.h"

#include <QPainter>

namespace kelvaro {
namespace {

constexpr int rowHeight = 28, headingHeight = 32, firstHeadingHeight = 28;

SidebarModel::Row kindOf(const QModelIndex& index) {
    return static_cast<SidebarModel::Row>(index.data(SidebarModel::kindRole).toInt());
}

} // namespace

QSize SidebarDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const {
    if (kindOf(index) != SidebarModel::Row::heading) return {0, rowHeight};
    return {0, index.row() == 0 ? firstHeadingHeight : headingHeight + measure::unit};
}

void SidebarDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const {
    const Theme& theme = appearance_.theme();
    const QString title = index.data().toString();
    if (kindOf(index) == SidebarModel::Row::heading) {
        QFont font = interfaceFont(TextRole::caption);
        font.setWeight(QFont::DemiBold);
        painter->setFont(font);
        painter->setPen(theme.secondary);
        painter->drawText(option.rect.adjusted(16, 0, -8, -6), Qt::AlignLeft | Qt::AlignBottom,
                          title);
        return;
    }
    const QRect row = option.rect.adjusted(8, 1, -8, -1);
    const bool chosen = option.state & QStyle::State_Selected;
    painter->setRenderHint(QPainter::Antialiasing);
    if (chosen || option.state & QStyle::State_MouseOver) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(chosen ? theme.selectedRow : theme.hover);
        painter->drawRoundedRect(row, measure::controlRadius, measure::controlRadius);
    }
    const auto* list = qobject_cast<const QWidget*>(option.widget);
    if (option.state & QStyle::State_HasFocus && list && list->hasFocus()) {
        painter->setPen(QPen(theme.accent, 1));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(QRectF(row).adjusted(0.5, 0.5, -0.5, -0.5), measure::controlRadius,
                                 measure::controlRadius);
    }
    const bool quiet =
        index.data(SidebarModel::dimRole).toBool() || kindOf(index) == SidebarModel::Row::addFolder;
    const auto name = static_cast<IconName>(index.data(SidebarModel::iconRole).toInt());
    painter->drawPixmap(row.left() + 8, row.center().y() - 7,
                        iconPixmap(name, 16, chosen ? theme.text : theme.secondary,
                                   painter->device()->devicePixelRatioF()));
    QString count = index.data(SidebarModel::countRole).toString();
    if (index.data(SidebarModel::busyRole).toBool()) count = "…";
    painter->setFont(interfaceFont(TextRole::caption));
    painter->setPen(theme.secondary);
    const QRect text = row.adjusted(32, 0, -8, 0);
    painter->drawText(text, Qt::AlignRight | Qt::AlignVCenter, count);
    const int room = text.width() - painter->fontMetrics().horizontalAdvance(count) - 8;
    painter->setFont(interfaceFont());
    painter->setPen(quiet ? theme.secondary : theme.text);
    painter->drawText(text, Qt::AlignLeft | Qt::AlignVCenter,
                      painter->fontMetrics().elidedText(title, Qt::ElideMiddle, room));
}

} // namespace kelvaro
