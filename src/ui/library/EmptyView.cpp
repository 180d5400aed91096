#include "ui/library/EmptyView.h"

#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"
#include "ui/grid/CellPainter.h"

#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>

namespace kelvaro {
namespace {

constexpr int iconPx = 48;
constexpr int picturePx = 104, pictureGap = 8, picturesInRow = 6;
constexpr double faint = 0.45;

} // namespace

EmptyView::EmptyView(const Appearance& appearance, QWidget* parent)
    : QWidget(parent), appearance_(appearance) {
    setObjectName("emptyView");
    setFocusPolicy(Qt::ClickFocus); // keeps the keyboard until there are photos
    text_ = label({}, "heading", this);
    text_->setObjectName("emptyText");
    text_->setAlignment(Qt::AlignCenter);
    text_->setWordWrap(true);
    button_ = new QPushButton(this);
    button_->setObjectName("emptyButton");
    button_->setProperty("kind", "primary");
    button_->setEnabled(false); // until there is something to offer
    button_->hide();
    QObject::connect(button_, &QPushButton::clicked, this, [this] { onButton(); });
    auto* column = new QVBoxLayout(this);
    column->setSpacing(measure::margin);
    column->addStretch(4);
    column->addSpacing(iconPx);
    column->addWidget(text_);
    column->addWidget(button_, 0, Qt::AlignHCenter);
    column->addStretch(5); // a little above the middle
}

void EmptyView::show(const EmptyState& state, IconName icon) {
    icon_ = icon;
    text_->setText(words(state.text));
    const QString title = words(state.button);
    button_->setVisible(!state.button.empty());
    button_->setEnabled(!state.button.empty());
    button_->setText(title);
    button_->setAccessibleName(title);
    button_->setToolTip(title);
    update();
}

void EmptyView::setPictures(std::vector<QImage> pictures) {
    pictures_ = std::move(pictures);
    update();
}

// In rows below the text, as many as fit.
void EmptyView::paintPictures(QPainter& painter) const {
    const int top = std::max(text_->geometry().bottom(),
                             button_->isVisible() ? button_->geometry().bottom() : 0) +
                    measure::groupGap;
    const int fitting = (width() - 2 * measure::margin + pictureGap) / (picturePx + pictureGap);
    const int columns = std::clamp(std::min(fitting, int(pictures_.size())), 1, picturesInRow);
    const int left = (width() - columns * (picturePx + pictureGap) + pictureGap) / 2;
    painter.setOpacity(faint);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    for (int at = 0; at < int(pictures_.size()); ++at) {
        const QRect cell(left + at % columns * (picturePx + pictureGap),
                         top + at / columns * (picturePx + pictureGap), picturePx, picturePx);
        if (cell.bottom() > height() - measure::margin) break;
        const QImage& picture = pictures_[size_t(at)];
        painter.drawImage(photoRect(cell, picture.size(), devicePixelRatioF()), picture);
    }
}

void EmptyView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setOpacity(0.7);
    painter.drawPixmap(
        (width() - iconPx) / 2, text_->y() - iconPx - 12,
        iconPixmap(icon_, iconPx, appearance_.theme().secondary, devicePixelRatioF()));
    if (!pictures_.empty()) paintPictures(painter);
}

} // namespace kelvaro
