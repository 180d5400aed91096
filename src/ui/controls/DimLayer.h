// Dims what it covers and lets the pointer through: the surroundings of a photo whose colours are
// judged.
#pragma once

#include "ui/theme/Appearance.h"

#include <QEvent>
#include <QPainter>
#include <QWidget>

namespace kelvaro {

class DimLayer final : public QWidget {
public:
    // Covers `below` whatever its size, hidden until shown.
    DimLayer(const Appearance& appearance, QWidget* below)
        : QWidget(below), appearance_(appearance) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setFocusPolicy(Qt::NoFocus);
        hide();
        below->installEventFilter(this);
    }
    void setOn(bool on) {
        setGeometry(parentWidget()->rect());
        setVisible(on);
        raise();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QColor veil = appearance_.theme().window;
        veil.setAlphaF(0.72f);
        QPainter(this).fillRect(rect(), veil);
    }
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (watched == parentWidget() && event->type() == QEvent::Resize)
            setGeometry(parentWidget()->rect());
        return QWidget::eventFilter(watched, event);
    }

private:
    const Appearance& appearance_;
};

} // namespace kelvaro
