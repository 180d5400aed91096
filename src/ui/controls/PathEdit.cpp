#include "ui/controls/PathEdit.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyleOptionFrame>
#include <QToolTip>

namespace kelvaro {

QRect PathEdit::textRect() const {
    constexpr int besideTextPx = 2; // what the toolkit keeps free on both sides
    QStyleOptionFrame frame;
    initStyleOption(&frame);
    return style()
        ->subElementRect(QStyle::SE_LineEditContents, &frame, this)
        .adjusted(besideTextPx, 0, -besideTextPx, 0);
}

bool PathEdit::isElided() const {
    return !hasFocus() && fontMetrics().horizontalAdvance(text()) > textRect().width();
}

bool PathEdit::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip && isElided()) {
        QToolTip::showText(static_cast<QHelpEvent*>(event)->globalPos(), text(), this);
        return true;
    }
    return QLineEdit::event(event);
}

void PathEdit::paintEvent(QPaintEvent* event) {
    if (!isElided()) return QLineEdit::paintEvent(event);
    QPainter painter(this);
    QStyleOptionFrame frame;
    initStyleOption(&frame);
    style()->drawPrimitive(QStyle::PE_PanelLineEdit, &frame, &painter, this);
    const QRect place = textRect();
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter,
                     fontMetrics().elidedText(text(), Qt::ElideLeft, place.width()));
}

} // namespace kelvaro
