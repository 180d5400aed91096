// The appearance that the window has now, shared by everything that draws: one theme, whether
// things may move, and the way to change both. Widgets read it when they paint; a change reaches
// them as Qt's palette change. Main thread.
#pragma once

#include "ui/theme/Icons.h"
#include "ui/theme/Theme.h"

namespace kelvaro {

class Appearance {
public:
    const Theme& theme() const { return theme_; }
    // Milliseconds that a movement takes; 0 where the system asks for none.
    int motionMs() const { return moves_ ? measure::motionMs : 0; }

    // Sets the program's palette, font and style sheet.
    void apply(bool dark, bool moves);

    QPixmap pixmap(IconName name, int sizePx, const QColor& colour, double pixelRatio) const {
        return iconPixmap(name, sizePx, colour, pixelRatio);
    }

private:
    Theme theme_ = Theme::forDark();
    bool moves_ = true;
};

} // namespace kelvaro
