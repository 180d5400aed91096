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

    std::function<void(double temperature)> onChosen;

private:
    QLineEdit* field_;
    QLabel* range_;
    double asShotKelvin_ = 6500;
};

} // namespace kelvaro
