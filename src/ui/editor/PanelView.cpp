#include "ui/editor/PanelView.h"

#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"

#include <QHBoxLayout>
#include <QPainter>

namespace kelvaro {
namespace {

constexpr int sidePx = 16;

} // namespace

PanelHeading::PanelHeading(const Appearance& appearance, const QString& title, QWidget* parent)
    : QAbstractButton(parent), appearance_(appearance) {
    setText(title);
    setCheckable(true);
    setChecked(true);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void PanelHeading::setChanged(bool changed) {
    if (std::exchange(changed_, changed) == changed) return;
    setAccessibleName(changed ? words("%1, changed").arg(text()) : text());
    update();
}

void PanelHeading::paintEvent(QPaintEvent*) {
    const Theme& theme = appearance_.theme();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QFont font = interfaceFont();
    font.setWeight(QFont::DemiBold);
    painter.setFont(font);
    painter.setPen(hasFocus() ? theme.accent : theme.text);
    const QRect area = rect().adjusted(sidePx, 0, -sidePx, 0);
    QRect used;
    painter.drawText(area, Qt::AlignLeft | Qt::AlignVCenter, text(), &used);
    if (changed_) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme.secondary);
        painter.drawEllipse(QPointF(used.right() + 12, used.center().y() + 1), 2.5, 2.5);
    }
    const auto name = isChecked() ? IconName::chevronDown : IconName::chevronRight;
    const QPixmap chevron = appearance_.pixmap(name, 16, theme.secondary, devicePixelRatioF());
    painter.drawPixmap(area.right() - 15, (height() - 16) / 2, chevron);
}

PanelView::PanelView(const Appearance& appearance, const QString& name, const QString& title,
                     const QString& resetTip, QWidget* parent)
    : QWidget(parent), appearance_(appearance) {
    heading_ = named(new PanelHeading(appearance, title, this), "heading", title,
                     words("Fold or unfold this panel"));
    heading_->setObjectName(name + ".heading");
    heading_->setToolTip({});
    tools_ = new QWidget(heading_);
    auto* tools = new QHBoxLayout(tools_);
    tools->setContentsMargins(0, 0, 0, 0);
    tools->setSpacing(2);
    reset_ = named(new IconButton(appearance, IconName::reset, tools_), "reset",
                   words("Reset %1").arg(title), resetTip);
    reset_->setObjectName(name + ".reset");
    reset_->setVisible(false);
    tools->addWidget(reset_);
    body_ = new QWidget(this);
    column_ = new QVBoxLayout(body_);
    column_->setContentsMargins(0, 0, 0, measure::unit);
    column_->setSpacing(0);
    note_ = wrappedLabel({}, "caption", measure::inspectorWidth - 2 * sidePx - 12, body_);
    note_->setContentsMargins(0, 4, 0, 4);
    note_->setObjectName(name + ".note");
    note_->hide();
    auto* noteRow = new QHBoxLayout;
    noteRow->setContentsMargins(sidePx, 0, sidePx, 0);
    noteRow->addWidget(note_);
    column_->addLayout(noteRow);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(heading_);
    column->addWidget(body_);
    QObject::connect(heading_, &QAbstractButton::toggled, this, [this](bool open) { fold(!open); });
    QObject::connect(reset_, &QToolButton::clicked, this, [this] {
        if (onReset) onReset();
    });
    QObject::connect(&motion_, &QVariantAnimation::valueChanged, this,
                     [this](const QVariant& value) { body_->setMaximumHeight(value.toInt()); });
    QObject::connect(&motion_, &QVariantAnimation::finished, this, [this] {
        body_->setVisible(heading_->isChecked());
        body_->setMaximumHeight(QWIDGETSIZE_MAX);
    });
}

void PanelView::addTool(QWidget* tool) {
    tools_->layout()->addWidget(tool);
    placeTools();
}

void PanelView::placeTools() {
    tools_->adjustSize();
    tools_->move(measure::inspectorWidth - sidePx - 22 - tools_->width(),
                 (heading_->sizeHint().height() - tools_->height()) / 2);
}

void PanelView::setChanged(bool changed) {
    changed_ = changed;
    heading_->setChanged(changed);
    reset_->setVisible(changed && (underMouse() || reset_->hasFocus()));
    placeTools();
}

void PanelView::setNote(const QString& note) {
    note_->setText(note);
    note_->setVisible(!note.isEmpty());
}

void PanelView::setFolded(bool folded) {
    const QSignalBlocker quiet(heading_);
    heading_->setChecked(!folded);
    body_->setVisible(!folded);
}

void PanelView::fold(bool folded) {
    if (onFolded) onFolded(folded);
    motion_.stop();
    if (appearance_.motionMs() == 0) return body_->setVisible(!folded);
    body_->show();
    const int whole = body_->sizeHint().height();
    motion_.setStartValue(folded ? whole : 0);
    motion_.setEndValue(folded ? 0 : whole);
    motion_.setDuration(appearance_.motionMs());
    motion_.setEasingCurve(QEasingCurve::OutCubic);
    motion_.start();
}

void PanelView::enterEvent(QEnterEvent*) {
    reset_->setVisible(changed_);
    placeTools();
}

void PanelView::leaveEvent(QEvent*) {
    reset_->setVisible(changed_ && reset_->hasFocus());
}

} // namespace kelvaro
