#include "ui/shell/Pill.h"

#include "ui/Texts.h"
#include "ui/controls/Naming.h"

#include <QAccessible>
#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>

namespace kelvaro {
namespace {

constexpr int noticeMs = 2500;
constexpr int risePx = 8;
constexpr int sidePx = 16;

} // namespace

Pill::Pill(const Appearance& appearance, const char* objectName, QWidget* window, int heightPx,
           Place place)
    : QWidget(window),
      appearance_(appearance),
      window_(window),
      heightPx_(heightPx),
      place_(std::move(place)) {
    setObjectName(objectName);
    text_ = new QLabel(this);
    text_->setTextFormat(Qt::PlainText);
    stop_ = named(new IconButton(appearance, IconName::stop, this), "stopButton", words("Stop"),
                  words("Stop"));
    stop_->setFixedSize(24, 22);
    QObject::connect(stop_, &QToolButton::clicked, this, [this] {
        if (onStop_) onStop_();
    });
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(sidePx, 0, sidePx, 0);
    row->setSpacing(measure::unit);
    row->addWidget(text_);
    row->addWidget(stop_);
    leaving_.setSingleShot(true);
    QObject::connect(&leaving_, &QTimer::timeout, this, [this] { leave(); });
    hide();
    motion_.setStartValue(0.0);
    motion_.setEndValue(1.0);
    motion_.setEasingCurve(QEasingCurve::OutCubic);
    QObject::connect(&motion_, &QVariantAnimation::valueChanged, this, [this] { this->place(); });
    QObject::connect(&motion_, &QVariantAnimation::finished, this, [this] {
        if (goes_) hide();
    });
    window_->installEventFilter(this);
}

void Pill::showNotice(const QString& text) {
    share_.reset();
    onStop_ = nullptr;
    stop_->hide();
    text_->setText(text);
    setAccessibleName(text);
    appear();
    leaving_.start(noticeMs);
    QAccessibleEvent told(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&told);
}

void Pill::showProgress(const QString& text, std::optional<double> share,
                        std::function<void()> stop) {
    share_ = share;
    onStop_ = std::move(stop);
    stop_->setVisible(onStop_ != nullptr);
    text_->setText(text);
    setAccessibleName(text);
    leaving_.stop();
    appear();
}

void Pill::appear() {
    const bool wasThere = isStaying();
    goes_ = false;
    show();
    raise();
    if (!wasThere) moveTo(QAbstractAnimation::Forward);
    place();
}

void Pill::moveTo(QAbstractAnimation::Direction direction) {
    motion_.stop();
    if (appearance_.motionMs() == 0) return;
    motion_.setDirection(direction);
    motion_.setDuration(appearance_.motionMs());
    motion_.start();
}

void Pill::leave() {
    leaving_.stop();
    if (goes_) return;
    goes_ = true;
    if (appearance_.motionMs() == 0) return hide();
    moveTo(QAbstractAnimation::Backward);
}

void Pill::place() {
    if (isHidden()) return;
    const bool still = motion_.state() == QAbstractAnimation::Stopped;
    const double there = still ? 1 : motion_.currentValue().toDouble();
    const QSize size(std::min(sizeHint().width(), window_->width() - 2 * sidePx), heightPx_);
    setGeometry(QRect(place_(size) + QPoint(0, int((1 - there) * risePx)), size));
    update();
}

void Pill::paintEvent(QPaintEvent*) {
    const Theme& theme = appearance_.theme();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF body = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(QPen(blended(theme.hairline, theme.control), 1));
    painter.setBrush(theme.control);
    painter.drawRoundedRect(body, heightPx_ / 2.0, heightPx_ / 2.0);
    if (!share_) return;
    const QRectF track(sidePx, heightPx_ - 5, width() - 2 * sidePx, 2);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme.hairline);
    painter.drawRoundedRect(track, 1, 1);
    painter.setBrush(theme.accent);
    painter.drawRoundedRect(QRectF(track.topLeft(), QSizeF(track.width() * *share_, 2)), 1, 1);
}

bool Pill::eventFilter(QObject* watched, QEvent* event) {
    if (watched == window_ && event->type() == QEvent::Resize && isVisible()) place();
    return QWidget::eventFilter(watched, event);
}

} // namespace kelvaro
