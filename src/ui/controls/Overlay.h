// A layer over the whole window that holds one panel: sheets (centred, the window dimmed) and
// popovers (hanging from a button). The keyboard stays inside; Esc and a click outside close it.
#pragma once

#include "ui/theme/Appearance.h"

#include <QPointer>
#include <QWidget>

#include <functional>

namespace kelvaro {

class Overlay : public QWidget {
public:
    enum class Kind { sheet, popover };

    // Covers `window`; hidden until `open`. A popover hangs from `anchor`.
    Overlay(const Appearance& appearance, Kind kind, QWidget* window, QWidget* anchor = nullptr);

    QWidget* panel() const { return panel_; }
    // What takes the keyboard when it opens; else the first control of the panel.
    void setFirstFocus(QWidget* widget) { firstFocus_ = widget; }
    void open();
    // Closes, gives the keyboard back, calls `onClosed`, and deletes itself when it was asked to.
    void dismiss();
    void setDeletesItself(bool on) { deletesItself_ = on; }
    // A sheet that asks a question is not closed by a click beside it.
    void setClosesOnClickOutside(bool on) { closesOutside_ = on; }

    std::function<void()> onClosed;

protected:
    // Runs before the panel is laid out and shown: what nobody sees need not be kept up to date.
    virtual void prepare() {}
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    bool event(QEvent* event) override;

private:
    void place();
    QRect popoverRect(const QSize& size) const;
    std::vector<QWidget*> tabStops() const;

    const Appearance& appearance_;
    Kind kind_;
    QWidget* window_;
    QPointer<QWidget> anchor_, firstFocus_, focusBefore_;
    QWidget* panel_;
    bool deletesItself_ = false, closesOutside_ = true;
};

// A rounded panel with its shadow, as sheets and popovers have it.
void paintPanel(QPainter& painter, const QRectF& panel, const Theme& theme);
inline constexpr int panelShadowPx = 16; // that the shadow reaches around it

} // namespace kelvaro
