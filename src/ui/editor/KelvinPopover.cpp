#include "ui/editor/KelvinPopover.h"

#include "editor/KelvinField.h"
#include "ui/Texts.h"
#include "ui/controls/Labels.h"
#include "ui/controls/Naming.h"

#include <QMouseEvent>
#include <QVBoxLayout>

namespace kelvaro {
namespace {

constexpr int widthPx = measure::inspectorWidth - 32; // as wide as the row

} // namespace

KelvinPopover::KelvinPopover(const Appearance& appearance, QWidget* window, QWidget* anchor)
    : Overlay(appearance, Kind::popover, window, anchor), row_(anchor) {
    setObjectName("kelvinPopover");
    const KelvinField shown = kelvinField(0, 6500);
    panel()->setFixedWidth(widthPx);
    auto* column = new QVBoxLayout(panel());
    column->setContentsMargins(16, 16, 16, 16);
    column->setSpacing(measure::unit);
    column->addWidget(label(words(shown.title), "heading"));
    field_ = named(new QLineEdit(panel()), "kelvinField", words(shown.title), words(shown.prompt));
    field_->setPlaceholderText(words(shown.prompt));
    column->addWidget(field_);
    range_ = wrappedLabel({}, "caption", widthPx - 32, panel());
    range_->setObjectName("kelvinRange");
    column->addWidget(range_);
    setFirstFocus(field_);
    QObject::connect(field_, &QLineEdit::returnPressed, this, [this] {
        const auto temperature =
            temperatureFromKelvinText(field_->text().toStdString(), asShotKelvin_);
        if (!temperature) return field_->selectAll();
        if (onChosen) onChosen(*temperature);
        dismiss();
    });
}

void KelvinPopover::begin(double temperature, double asShotKelvin) {
    asShotKelvin_ = asShotKelvin;
    const KelvinField shown = kelvinField(temperature, asShotKelvin);
    field_->setText(fromUtf8(shown.value));
    range_->setText(fromUtf8(shown.rangeText));
    open();
    field_->selectAll();
}

void KelvinPopover::mouseDoubleClickEvent(QMouseEvent* event) {
    const QRect row(row_->mapTo(parentWidget(), QPoint()), row_->size());
    if (!row.contains(event->position().toPoint())) return Overlay::mouseDoubleClickEvent(event);
    dismiss();
    if (onReset) onReset();
}

} // namespace kelvaro
