// What stands in place of an empty grid: one line and at most one button, in the middle.
#pragma once

#include "library/PhotoQuery.h"
#include "ui/theme/Appearance.h"

#include <QLabel>
#include <QPushButton>

#include <functional>

namespace kelvaro {

class EmptyView final : public QWidget {
public:
    explicit EmptyView(const Appearance& appearance, QWidget* parent = nullptr);
    void show(const EmptyState& state, IconName icon);
    using QWidget::show;

    std::function<void()> onButton;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Appearance& appearance_;
    IconName icon_ = IconName::photos;
    QLabel* text_;
    QPushButton* button_;
};

} // namespace kelvaro
