// A combo box with the chevron of our icons.
#pragma once

#include "ui/theme/Appearance.h"

#include <QComboBox>

namespace kelvaro {

class Choice final : public QComboBox {
public:
    explicit Choice(const Appearance& appearance, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
    // A wheel over a form scrolls the form instead of changing what it passes.
    void wheelEvent(QWheelEvent* event) override;

private:
    const Appearance& appearance_;
};

} // namespace kelvaro
