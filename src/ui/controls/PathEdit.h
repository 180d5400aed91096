// A field for the path of a folder. While nobody writes in it, a path that is too long loses its
// beginning to an ellipsis, so that its last folder stays readable; its tip holds all of it.
#pragma once

#include <QLineEdit>

namespace kelvaro {

class PathEdit final : public QLineEdit {
public:
    using QLineEdit::QLineEdit;

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool isElided() const;
    // Where the text stands.
    QRect textRect() const;
};

} // namespace kelvaro
