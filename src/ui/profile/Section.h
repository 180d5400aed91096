// A part of the profile page that decides its height from the width it is given.
#pragma once

#include <QWidget>

namespace kelvaro {

class Section : public QWidget {
public:
    using QWidget::QWidget;
    // Lays out what it holds for that width and tells the height that it takes; 0 when there is
    // nothing to show.
    virtual int arrange(int widthPx) = 0;
};

} // namespace kelvaro
