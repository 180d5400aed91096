// A check box that looks like a switch.
#pragma once

#include "ui/theme/Appearance.h"

#include <QCheckBox>

namespace kelvaro {

class Switch final : public QCheckBox {
public:
    explicit Switch(const Appearance& appearance, QWidget* parent = nullptr);
    QSize sizeHint() const override { return {38, 24}; }
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    bool hitButton(const QPoint& position) const override { return rect().contains(position); }

private:
    const Appearance& appearance_;
};

} // namespace kelvaro
