#include "ui/editor/SliderRow.h"

#include "editor/TrackTint.h"
#include "recipe/RecipeTexts.h"
#include "ui/Texts.h"
#include "ui/controls/Naming.h"

#include <QEnterEvent>
#include <QHelpEvent>
#include <QLineEdit>
#include <QPainter>
#include <QToolTip>

#include <cmath>

namespace kelvaro {
namespace {

constexpr int rowHeight = 40, sidePx = 16, valueWidth = 84, titleHeight = 24;
constexpr double trackY = 30, knobRadius = 5;
constexpr int seriesMs = 600;
constexpr double startsDragAfter = 2; // points
constexpr double accessibleUnits = 1000;
constexpr double notch = 120;

bool isFine(Qt::KeyboardModifiers held) {
    // Some desktops take Alt with a drag for themselves.
    return held & (Qt::AltModifier | Qt::ShiftModifier);
}

} // namespace

SliderRow::SliderRow(const Appearance& appearance, QWidget* parent)
    : QAbstractSlider(parent), appearance_(appearance) {
    setOrientation(Qt::Horizontal);
    setFocusPolicy(Qt::StrongFocus);
    setFixedHeight(rowHeight);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    series_.setSingleShot(true);
    series_.setInterval(seriesMs);
    QObject::connect(&series_, &QTimer::timeout, this, [this] {
        if (onEnd) onEnd();
    });
    // Whoever can't use hand or keys sets the value through the accessibility service.
    QObject::connect(this, &QAbstractSlider::valueChanged, this, [this](int units) {
        if (!showing_) setTo(units / accessibleUnits);
    });
}

QSize SliderRow::sizeHint() const {
    return {measure::inspectorWidth, rowHeight};
}

void SliderRow::show(const InspectorRow& row) {
    if (row == row_) return;
    const bool isFirst = row_.spec != row.spec;
    row_ = row;
    showing_ = true;
    if (isFirst) {
        const QString title = words(row.spec->title);
        setObjectName("row." + fromUtf8(row.spec->id));
        setToolTip(words(row.tip));
        setAccessibleName(title);
        setRange(static_cast<int>(std::lround(row.spec->range.lower * accessibleUnits)),
                 static_cast<int>(std::lround(row.spec->range.upper * accessibleUnits)));
        setSingleStep(
            static_cast<int>(std::lround(sliderStep(*row.spec, false) * accessibleUnits)));
    }
    setAccessibleDescription(fromUtf8(row.valueText) + ". " + words(row.tip));
    setValue(static_cast<int>(std::lround(row.value * accessibleUnits)));
    showing_ = false;
    update();
}

QRectF SliderRow::track() const {
    return {double(sidePx), trackY, double(width() - 2 * sidePx), 2};
}

QRect SliderRow::valueRect() const {
    return {width() - sidePx - valueWidth, 0, valueWidth, titleHeight};
}

// --- Hand ---

void SliderRow::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !row_.spec) return QWidget::mousePressEvent(event);
    finish();
    pressedX_ = event->position().x();
    moved_ = false;
    drag_.emplace(row_.spec->range, row_.value, track().width(), pressedX_);
    update();
}

void SliderRow::mouseMoveEvent(QMouseEvent* event) {
    if (!drag_) return;
    const double x = event->position().x();
    if (!moved_) {
        if (std::abs(x - pressedX_) < startsDragAfter) return;
        moved_ = true;
        if (onBegin) onBegin();
    }
    if (onValue) onValue(drag_->movedTo(x, isFine(event->modifiers())));
}

void SliderRow::mouseReleaseEvent(QMouseEvent* event) {
    if (!drag_ || event->button() != Qt::LeftButton) return;
    drag_.reset();
    update();
    if (std::exchange(moved_, false)) {
        if (onEnd) onEnd();
        return;
    }
    if (!valueRect().contains(event->position().toPoint())) return;
    if (row_.opensKelvinField && onKelvin) return onKelvin();
    edit(fromUtf8(row_.valueText));
}

void SliderRow::mouseDoubleClickEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return;
    drag_.reset();
    if (field_) field_->deleteLater();
    if (onReset) onReset();
}

void SliderRow::enterEvent(QEnterEvent*) {
    hovered_ = true;
    update();
}

void SliderRow::leaveEvent(QEvent*) {
    hovered_ = false;
    update();
}

// --- Wheel and keys ---

void SliderRow::finish() {
    if (!series_.isActive()) return;
    series_.stop();
    if (onEnd) onEnd();
}

void SliderRow::hideEvent(QHideEvent*) {
    finish();
}

void SliderRow::setTo(double value) {
    if (!series_.isActive() && onBegin) onBegin();
    series_.start();
    if (onValue) onValue(value);
}

void SliderRow::step(double steps, bool fine) {
    if (row_.spec) setTo(stepped(*row_.spec, row_.value, steps, fine));
}

void SliderRow::wheelEvent(QWheelEvent* event) {
    // A wheel over the inspector scrolls it; only the row that has the keyboard takes it.
    if (!hasFocus()) return event->ignore();
    wheel_ += event->angleDelta().y() != 0 ? event->angleDelta().y() : event->angleDelta().x();
    const double notches = std::trunc(wheel_ / notch);
    wheel_ -= notches * notch;
    if (notches != 0) step(notches, isFine(event->modifiers()));
    event->accept();
}

void SliderRow::keyPressEvent(QKeyEvent* event) {
    const bool fine = isFine(event->modifiers());
    switch (event->key()) {
    case Qt::Key_Right:
    case Qt::Key_Up:
        return step(1, fine);
    case Qt::Key_Left:
    case Qt::Key_Down:
        return step(-1, fine);
    case Qt::Key_PageUp:
        return step(10, fine);
    case Qt::Key_PageDown:
        return step(-10, fine);
    case Qt::Key_Home:
        return row_.spec ? setTo(row_.spec->range.lower) : void();
    case Qt::Key_End:
        return row_.spec ? setTo(row_.spec->range.upper) : void();
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
        if (onReset) onReset();
        return;
    default:
        break;
    }
    const QString text = event->text();
    const bool beginsNumber =
        !text.isEmpty() && (text[0].isDigit() || text[0] == '-' || text[0] == '+');
    if (!beginsNumber || (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier)))
        return QWidget::keyPressEvent(event);
    if (row_.opensKelvinField && onKelvin) return onKelvin();
    edit(text);
    field_->deselect();
}

// --- Typing ---

void SliderRow::edit(const QString& text) {
    finish();
    field_ = named(new QLineEdit(text, this), "valueField", accessibleName(), words(row_.tip));
    fieldPressed_ = false;
    field_->setToolTip({});
    field_->setAlignment(Qt::AlignRight);
    field_->setStyleSheet("min-height: 20px; padding: 0 4px;");
    field_->setGeometry(valueRect().adjusted(0, 1, 6, 0));
    field_->selectAll();
    field_->installEventFilter(this);
    QObject::connect(field_, &QLineEdit::editingFinished, this, [this] { commit(); });
    field_->show();
    field_->setFocus();
}

void SliderRow::commit() {
    if (!field_) return;
    QLineEdit* field = field_;
    field_ = nullptr;
    const auto value =
        row_.spec ? typedValue(*row_.spec, field->text().toStdString()) : std::optional<double>();
    const bool hadFocus = field->hasFocus();
    field->deleteLater();
    if (hadFocus) setFocus();
    if (!value || *value == row_.value) return;
    if (onBegin) onBegin();
    if (onValue) onValue(*value);
    if (onEnd) onEnd();
}

bool SliderRow::eventFilter(QObject* watched, QEvent* event) {
    if (watched == field_) {
        // The first click of a double click has opened the field under the second one.
        if (event->type() == QEvent::MouseButtonPress) fieldPressed_ = true;
        if (event->type() == QEvent::MouseButtonDblClick && !fieldPressed_) {
            std::exchange(field_, nullptr)->deleteLater();
            setFocus();
            if (onReset) onReset();
            return true;
        }
        const bool isOverride = event->type() == QEvent::ShortcutOverride;
        const bool isEscape = (isOverride || event->type() == QEvent::KeyPress) &&
                              static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape;
        // Esc is the field's before it is the window's.
        if (isEscape && isOverride) {
            event->accept();
            return true;
        }
        if (isEscape) {
            QLineEdit* field = field_;
            field_ = nullptr;
            field->deleteLater();
            setFocus();
            return true;
        }
    }
    return QAbstractSlider::eventFilter(watched, event);
}

// A click on a value in kelvins does something of its own.
bool SliderRow::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip && row_.opensKelvinField) {
        const auto* help = static_cast<QHelpEvent*>(event);
        if (valueRect().contains(help->pos())) {
            QToolTip::showText(help->globalPos(), words(texts::kelvinEntryTip), this, valueRect());
            return true;
        }
    }
    return QAbstractSlider::event(event);
}

// --- Painting ---

void SliderRow::paintTrack(QPainter& painter) const {
    const Theme& theme = appearance_.theme();
    const QRectF line = track();
    const double zero = line.left() + row_.zeroPosition * line.width();
    const double knob = line.left() + row_.position * line.width();
    const auto stops = trackTint(row_.spec->track);
    painter.setPen(Qt::NoPen);
    if (stops.empty()) {
        painter.setBrush(theme.dark ? QColor(255, 255, 255, 40) : QColor(0, 0, 0, 46));
    } else {
        QLinearGradient tint(line.topLeft(), line.topRight());
        for (const TrackStop& stop : stops)
            tint.setColorAt(stop.position, QColor(stop.red, stop.green, stop.blue));
        painter.setBrush(tint);
    }
    painter.drawRoundedRect(line, 1, 1);
    const bool hasZeroInside = row_.zeroPosition > 0 && row_.zeroPosition < 1;
    if (hasZeroInside)
        painter.fillRect(QRectF(std::round(zero) - 0.5, trackY - 3, 1, 8), theme.secondary);
    const QColor ink = !isEnabled()     ? theme.disabled
                       : row_.isChanged ? theme.text
                                        : theme.secondary;
    if (stops.empty() && row_.isChanged)
        painter.fillRect(QRectF(QPointF(zero, trackY), QPointF(knob, trackY + 2)).normalized(),
                         ink);
    // The knob stands out from the track by the ground around it.
    painter.setBrush(theme.panel);
    painter.drawEllipse(QPointF(knob, trackY + 1), knobRadius + 2, knobRadius + 2);
    painter.setBrush(hasFocus() ? theme.accent : ink);
    painter.drawEllipse(QPointF(knob, trackY + 1), knobRadius, knobRadius);
}

void SliderRow::paintEvent(QPaintEvent*) {
    if (!row_.spec) return;
    const Theme& theme = appearance_.theme();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if ((hovered_ || drag_) && isEnabled()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme.hover);
        painter.drawRoundedRect(QRectF(rect()).adjusted(8, 0, -8, 0), measure::controlRadius,
                                measure::controlRadius);
    }
    painter.setFont(interfaceFont());
    painter.setPen(isEnabled() ? theme.text : theme.disabled);
    painter.drawText(QRect(sidePx, 0, width() - 2 * sidePx - valueWidth, titleHeight),
                     Qt::AlignLeft | Qt::AlignVCenter, words(row_.spec->title));
    painter.setPen(!isEnabled() ? theme.disabled : row_.isChanged ? theme.text : theme.secondary);
    if (!field_)
        painter.drawText(valueRect(), Qt::AlignRight | Qt::AlignVCenter, fromUtf8(row_.valueText));
    paintTrack(painter);
}

} // namespace kelvaro
