#include "ui/controls/Overlay.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QLayout>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace kelvaro {
namespace {

constexpr int edgePx = 8; // that a panel keeps from the window's edge

void drawSoftShadow(QPainter& painter, const QRectF& panel, const QColor& colour) {
    painter.setPen(Qt::NoPen);
    for (int step = panelShadowPx; step > 0; step -= 2) {
        QColor layer = colour;
        layer.setAlphaF(colour.alphaF() * 0.055f * float(panelShadowPx - step + 2) / panelShadowPx *
                        2);
        painter.setBrush(layer);
        painter.drawRoundedRect(panel.adjusted(-step, -step + 4, step, step + 4),
                                measure::sheetRadius + step, measure::sheetRadius + step);
    }
}

} // namespace

void paintPanel(QPainter& painter, const QRectF& panel, const Theme& theme) {
    painter.setRenderHint(QPainter::Antialiasing);
    drawSoftShadow(painter, panel, theme.shadow);
    painter.setPen(QPen(blended(theme.hairline, theme.panel), 1));
    painter.setBrush(theme.panel);
    painter.drawRoundedRect(panel.adjusted(0.5, 0.5, -0.5, -0.5), measure::sheetRadius,
                            measure::sheetRadius);
}

Overlay::Overlay(const Appearance& appearance, Kind kind, QWidget* window, QWidget* anchor)
    : QWidget(window),
      appearance_(appearance),
      kind_(kind),
      window_(window),
      anchor_(anchor),
      panel_(new QWidget(this)) {
    hide();
    setFocusPolicy(Qt::NoFocus);
    window_->installEventFilter(this);
}

void Overlay::open() {
    prepare();
    focusBefore_ = QApplication::focusWidget();
    place();
    show();
    raise();
    QWidget* first = firstFocus_;
    if (!first) {
        const auto stops = tabStops();
        first = stops.empty() ? nullptr : stops.front();
    }
    if (first) {
        first->setFocus(Qt::PopupFocusReason);
    } else {
        setFocusPolicy(Qt::StrongFocus);
        setFocus(Qt::PopupFocusReason);
    }
}

void Overlay::dismiss() {
    if (isHidden()) return;
    hide();
    if (focusBefore_) focusBefore_->setFocus(Qt::PopupFocusReason);
    if (deletesItself_) deleteLater();
    if (onClosed) onClosed();
}

QRect Overlay::popoverRect(const QSize& size) const {
    const QPoint below =
        anchor_->mapTo(window_, QPoint(anchor_->width() / 2, anchor_->height() + 6));
    const int left = std::clamp(below.x() - size.width() / 2, edgePx,
                                std::max(edgePx, width() - size.width() - edgePx));
    return {QPoint(left, std::min(below.y(), std::max(edgePx, height() - size.height() - edgePx))),
            size};
}

void Overlay::place() {
    setGeometry(window_->rect());
    if (panel_->layout()) panel_->layout()->activate();
    const QSize room(width() - 2 * edgePx, height() - 2 * edgePx);
    const QSize size = panel_->sizeHint().expandedTo(panel_->minimumSize()).boundedTo(room);
    if (kind_ == Kind::popover && anchor_) {
        panel_->setGeometry(popoverRect(size));
    } else {
        panel_->setGeometry(
            QRect(QPoint((width() - size.width()) / 2, (height() - size.height()) * 2 / 5), size));
    }
    update();
}

void Overlay::paintEvent(QPaintEvent*) {
    const Theme& theme = appearance_.theme();
    QPainter painter(this);
    if (kind_ == Kind::sheet) painter.fillRect(rect(), theme.scrim);
    paintPanel(painter, QRectF(panel_->geometry()), theme);
}

void Overlay::mousePressEvent(QMouseEvent* event) {
    if (closesOutside_ && !panel_->geometry().contains(event->position().toPoint())) dismiss();
    event->accept();
}

void Overlay::keyPressEvent(QKeyEvent* event) {
    const bool enters = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->key() == Qt::Key_Escape) {
        dismiss();
    } else if (auto* button = qobject_cast<QAbstractButton*>(QApplication::focusWidget());
               enters && button) {
        button->click();
    }
    event->accept(); // nothing below the layer hears the keyboard
}

std::vector<QWidget*> Overlay::tabStops() const {
    std::vector<QWidget*> stops;
    // Qt keeps all widgets of a window in one ring; those of the panel are taken in its order.
    for (QWidget* widget = window_->nextInFocusChain(); widget && widget != window_;
         widget = widget->nextInFocusChain()) {
        if (panel_->isAncestorOf(widget) && widget->isEnabled() && widget->isVisibleTo(panel_) &&
            (widget->focusPolicy() & Qt::TabFocus))
            stops.push_back(widget);
    }
    return stops;
}

bool Overlay::focusNextPrevChild(bool next) {
    const auto stops = tabStops();
    if (stops.empty()) return true;
    const auto at = std::ranges::find(stops, QApplication::focusWidget());
    const auto count = static_cast<std::ptrdiff_t>(stops.size());
    const std::ptrdiff_t now = at == stops.end() ? (next ? -1 : 0) : at - stops.begin();
    stops[static_cast<size_t>((now + (next ? 1 : count - 1)) % count)]->setFocus(
        next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

bool Overlay::eventFilter(QObject* watched, QEvent* event) {
    if (watched == window_ && event->type() == QEvent::Resize && isVisible()) place();
    return QWidget::eventFilter(watched, event);
}

bool Overlay::event(QEvent* event) {
    // The panel's content has grown or shrunk.
    if (event->type() == QEvent::LayoutRequest && isVisible()) place();
    return QWidget::event(event);
}

} // namespace kelvaro
