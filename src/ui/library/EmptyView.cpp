#include "ui/library/EmptyView.h"

#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"

#include <QPainter>
#include <QVBoxLayout>

namespace kelvaro {
namespace {

constexpr int iconPx = 48;

} // namespace

EmptyView::EmptyView(const Appearance& appearance, QWidget* parent)
    : QWidget(parent), appearance_(appearance) {
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
    column->addStretch(5);
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

void EmptyView::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setOpacity(0.7);
    painter.drawPixmap(
        (width() - iconPx) / 2, text_->y() - iconPx - 12,
        iconPixmap(icon_, iconPx, appearance_.theme().secondary, devicePixelRatioF()));
}

} // namespace kelvaro
