// A flat button with one icon, drawn in the theme's colours; shows its action's state when it has
// one.
#pragma once

#include "ui/theme/Appearance.h"

#include <QToolButton>

namespace kelvaro {

class IconButton : public QToolButton {
public:
    IconButton(const Appearance& appearance, IconName name, QWidget* parent = nullptr);

    void setIconName(IconName name);
    // Drawn in the accent: something behind the button is active.
    void setHighlighted(bool on);
    bool isHighlighted() const { return highlighted_; }
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Appearance& appearance_;
    IconName name_;
    bool highlighted_ = false;
};

} // namespace kelvaro
