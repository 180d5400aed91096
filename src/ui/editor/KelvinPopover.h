// The small field for a temperature in kelvin; hangs from the temperature's row. Main thread.
#pragma once

#include "ui/controls/Overlay.h"

#include <QLabel>
#include <QLineEdit>

namespace kelvaro {

class KelvinPopover final : public Overlay {
public:
    KelvinPopover(const Appearance& appearance, QWidget* window, QWidget* anchor);

    void begin(double temperature, double asShotKelvin);
    QLineEdit* field() const { return field_; }

    std::function<void()> onReset; // a double click on the value, whose first click opened this
    std::function<void(double temperature)> onChosen;

protected:
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    QWidget* row_;
    QLineEdit* field_;
    QLabel* range_;
    double asShotKelvin_ = 6500;
};

} // namespace kelvaro
