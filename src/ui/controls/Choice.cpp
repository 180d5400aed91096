#include "ui/controls/Choice.h"

#include <QPainter>
#include <QWheelEvent>

namespace kelvaro {

Choice::Choice(const Appearance& appearance, QWidget* parent)
    : QComboBox(parent), appearance_(appearance) {
    setFocusPolicy(Qt::StrongFocus);
}

void Choice::paintEvent(QPaintEvent* event) {
    QComboBox::paintEvent(event);
    QPainter painter(this);
    const QColor colour =
        isEnabled() ? appearance_.theme().secondary : appearance_.theme().disabled;
    painter.drawPixmap(width() - 24, (height() - 16) / 2,
                       iconPixmap(IconName::chevronDown, 16, colour, devicePixelRatioF()));
}

void Choice::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

} // namespace kelvaro
