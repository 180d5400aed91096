// One style tag: a badge that tells its evidence when it is pointed at, reached by Tab or heard.
#pragma once

#include "ui/theme/Appearance.h"

#include <QWidget>

#include <functional>

namespace kelvaro {

class TagBadge final : public QWidget {
public:
    TagBadge(const Appearance& appearance, const QString& title, const QString& evidence,
             QWidget* parent);

    QString title() const { return accessibleName(); }
    QString evidence() const { return accessibleDescription(); }
    QSize sizeHint() const override;
    // Its evidence is what is shown of all.
    void setTold(bool told);

    std::function<void(const TagBadge* badge)> onPointed; // null: no longer

protected:
    void paintEvent(QPaintEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void point(bool at);

    const Appearance& appearance_;
    bool told_ = false;
};

} // namespace kelvaro
