#include "ui/controls/Switch.h"

#include <QPainter>

namespace kelvaro {

Switch::Switch(const Appearance& appearance, QWidget* parent)
    : QCheckBox(parent), appearance_(appearance) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

namespace {

QColor offColour(const Theme& theme) {
    QColor faint = theme.secondary;
    faint.setAlphaF(theme.dark ? 0.75f : 0.62f);
    return blended(faint, theme.window);
}

} // namespace

void Switch::paintEvent(QPaintEvent*) {
    const Theme& theme = appearance_.theme();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF track(1, (height() - 20) / 2.0, 36, 20);
    QColor ground = isChecked() ? theme.primary : offColour(theme);
    if (!isEnabled()) ground = blended(theme.hairline, theme.window);
    painter.setPen(Qt::NoPen);
    painter.setBrush(ground);
    painter.drawRoundedRect(track, 10, 10);
    painter.setBrush(isEnabled() ? QColor(Qt::white) : theme.disabled);
    painter.drawEllipse(
        QRectF(isChecked() ? track.right() - 18 : track.left() + 2, track.top() + 2, 16, 16));
    if (!hasFocus()) return;
    painter.setPen(QPen(theme.accent, 1.5));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(track.adjusted(-0.25, -0.25, 0.25, 0.25), 10.2, 10.2);
}

} // namespace kelvaro
