// What every interactive widget carries: a name for tests and style, a name for people who hear the
// window, and a help text that is shown as its tooltip.
#pragma once

#include <QWidget>

namespace kelvaro {

template<class Widget>
Widget* named(Widget* widget, const char* objectName, const QString& accessibleName,
              const QString& help) {
    widget->setObjectName(objectName);
    widget->setAccessibleName(accessibleName);
    widget->setToolTip(help);
    widget->setAccessibleDescription(help);
    if (widget->focusPolicy() == Qt::NoFocus || widget->focusPolicy() == Qt::ClickFocus)
        widget->setFocusPolicy(Qt::StrongFocus);
    return widget;
}

} // namespace kelvaro
