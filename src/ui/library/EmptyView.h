// What stands in place of an empty grid: one line and at most one button, in the middle.
#pragma once

#include "library/PhotoQuery.h"
#include "ui/theme/Appearance.h"

#include <QImage>
#include <QLabel>
#include <QPushButton>

#include <functional>
#include <vector>

namespace kelvaro {

class EmptyView final : public QWidget {
public:
    explicit EmptyView(const Appearance& appearance, QWidget* parent = nullptr);
    void show(const EmptyState& state, IconName icon);
    using QWidget::show;

    // What is drawn faintly below the text: the photos of a drive that is away, as last seen.
    void setPictures(std::vector<QImage> pictures);

    std::size_t pictureCount() const { return pictures_.size(); }

    std::function<void()> onButton;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void paintPictures(QPainter& painter) const;

    const Appearance& appearance_;
    IconName icon_ = IconName::photos;
    QLabel* text_;
    QPushButton* button_;
    std::vector<QImage> pictures_;
};

} // namespace kelvaro
