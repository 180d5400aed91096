#include "ui/profile/TagBadge.h"

#include "ui/controls/Naming.h"

#include <QFontMetrics>
#include <QPainter>

#include <utility>

namespace kelvaro {
namespace {

constexpr int heightPx = 32, sidePx = 14;

QFont badgeFont() {
    QFont font = interfaceFont();
    font.setWeight(QFont::Medium);
    return font;
}

} // namespace

TagBadge::TagBadge(const Appearance& appearance, const QString& title, const QString& evidence,
                   QWidget* parent)
    : QWidget(parent), appearance_(appearance) {
    named(this, "tagBadge", title, evidence);
}

QSize TagBadge::sizeHint() const {
    return {QFontMetrics(badgeFont()).horizontalAdvance(title()) + 2 * sidePx, heightPx};
}

void TagBadge::paintEvent(QPaintEvent*) {
    const Theme& theme = appearance_.theme();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF ground = QRectF(rect()).adjusted(0.75, 0.75, -0.75, -0.75);
    const QPen told(theme.secondary, 1.25);
    painter.setPen(hasFocus() ? QPen(theme.accent, 1.5) : told_ ? told : QPen(theme.hairline, 1));
    painter.setBrush(underMouse() ? blended(theme.hover, theme.control) : theme.control);
    painter.drawRoundedRect(ground, ground.height() / 2, ground.height() / 2);
    painter.setPen(theme.text);
    painter.setFont(badgeFont());
    painter.drawText(rect(), Qt::AlignCenter, title());
}

void TagBadge::setTold(bool told) {
    if (std::exchange(told_, told) != told) update();
}

void TagBadge::point(bool at) {
    update();
    if (onPointed) onPointed(at ? this : nullptr);
}

void TagBadge::enterEvent(QEnterEvent* event) {
    QWidget::enterEvent(event);
    point(true);
}

void TagBadge::leaveEvent(QEvent* event) {
    QWidget::leaveEvent(event);
    point(hasFocus());
}

void TagBadge::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    point(true);
}

void TagBadge::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    point(underMouse());
}

} // namespace kelvaro
