#include "ui/controls/IconButton.h"

#include <QPainter>
#include <QStyleOptionToolButton>
#include <QStylePainter>

namespace kelvaro {

IconButton::IconButton(const Appearance& appearance, IconName name, QWidget* parent)
    : QToolButton(parent), appearance_(appearance), name_(name) {
    setFocusPolicy(Qt::TabFocus); // a click leaves the keyboard where it is
    setPopupMode(QToolButton::InstantPopup);
}

void IconButton::setIconName(IconName name) {
    name_ = name;
    update();
}

void IconButton::setHighlighted(bool on) {
    if (highlighted_ == on) return;
    highlighted_ = on;
    update();
}

QSize IconButton::sizeHint() const {
    return {32, measure::controlHeight};
}

void IconButton::paintEvent(QPaintEvent*) {
    QStylePainter painter(this);
    QStyleOptionToolButton option;
    initStyleOption(&option);
    option.icon = {};
    option.text.clear();
    option.features &= ~(QStyleOptionToolButton::HasMenu | QStyleOptionToolButton::MenuButtonPopup);
    painter.drawComplexControl(QStyle::CC_ToolButton, option);
    const Theme& theme = appearance_.theme();
    const QColor colour = !isEnabled() ? theme.disabled
                          : highlighted_
                              ? theme.accent
                              : (underMouse() || isChecked() ? theme.text : theme.secondary);
    const QPixmap drawing = iconPixmap(name_, 20, colour, devicePixelRatioF());
    painter.drawPixmap((width() - 20) / 2, (height() - 20) / 2, drawing);
}

} // namespace kelvaro
