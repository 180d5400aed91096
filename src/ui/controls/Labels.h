// Labels in the roles that the style sheet knows: "heading", "secondary", "caption", "greeting".
#pragma once

#include <QLabel>

namespace kelvaro {

inline QLabel* label(const QString& text, const char* role = "body", QWidget* parent = nullptr) {
    auto* made = new QLabel(text, parent);
    made->setProperty("role", role);
    made->setTextFormat(Qt::PlainText);
    return made;
}

// Breaks into lines of `widthPx`.
inline QLabel* wrappedLabel(const QString& text, const char* role, int widthPx,
                            QWidget* parent = nullptr) {
    QLabel* made = label(text, role, parent);
    made->setWordWrap(true);
    made->setFixedWidth(widthPx);
    return made;
}

} // namespace kelvaro
