// One adjustment: title, value, and a track below; the whole row is the handle. Shows a row's state
// and reports what the hand, the wheel, keys or typing want. Main thread.
#pragma once

#include "editor/Inspector.h"
#include "editor/SliderMapping.h"
#include "ui/theme/Appearance.h"

#include <QAbstractSlider>
#include <QPointer>
#include <QTimer>

#include <functional>
#include <optional>

class QLineEdit;

namespace kelvaro {

class SliderRow final : public QAbstractSlider {
public:
    explicit SliderRow(const Appearance& appearance, QWidget* parent = nullptr);

    void show(const InspectorRow& row);
    using QWidget::show;
    const InspectorRow& row() const { return row_; }
    QSize sizeHint() const override;
    // The part of the row that a click turns into a field.
    QRect valueRect() const;
    // Ends a series of steps that has no end of its own.
    void finish();

    // From begin to end all values are one step.
    std::function<void()> onBegin, onEnd;
    std::function<void(double)> onValue;
    std::function<void()> onReset;
    std::function<void()> onKelvin; // a click on the temperature

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QRectF track() const;
    void step(double steps, bool fine);
    void setTo(double value);
    void edit(const QString& text);
    void commit();
    void paintTrack(QPainter& painter) const;

    const Appearance& appearance_;
    InspectorRow row_;
    std::optional<SliderDrag> drag_;
    double pressedX_ = 0;
    bool moved_ = false, hovered_ = false, showing_ = false;
    double wheel_ = 0; // what is left of a notch
    QTimer series_;    // of steps by wheel or keys
    QPointer<QLineEdit> field_;
    bool fieldPressed_ = false; // since it opened
};

} // namespace kelvaro
