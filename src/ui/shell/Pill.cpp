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
constexpr int heightPx = 36;
constexpr int risePx = 8;

} // namespace

Pill::Pill(const Appearance& appearance, const char* objectName, QWidget* window, int bottomPx)
    : QWidget(window), appearance_(appearance), window_(window), bottomPx_(bottomPx) {
    setObjectName(objectName);
    text_ = new QLabel(this);
    text_->setTextFormat(Qt::PlainText);
    stop_ = named(new IconButton(appearance, IconName::stop, this), "stopButton", words("Stop"),
                  words("Stop"));
    stop_->setFixedSize(24, 24);
    QObject::connect(stop_, &QToolButton::clicked, this, [this] {
        if (onStop_) onStop_();
    });
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(16, 0, 16, 0);
    row->setSpacing(measure::unit);
    row->addWidget(text_);
    row->addWidget(stop_);
    leaving_.setSingleShot(true);
    QObject::connect(&leaving_, &QTimer::timeout, this, [this] { leave(); });
    motion_.setEasingCurve(QEasingCurve::OutCubic);
    QObject::connect(&motion_, &QVariantAnimation::valueChanged, this, [this] { place(); });
    QObject::connect(&motion_, &QVariantAnimation::finished, this, [this] {
        if (motion_.direction() == QAbstractAnimation::Backward) hide();
    });
    motion_.setStartValue(0.0);
    motion_.setEndValue(1.0);
    window_->installEventFilter(this);
    hide();
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
    const bool wasThere = isVisible() && motion_.direction() == QAbstractAnimation::Forward;
    motion_.setDirection(QAbstractAnimation::Forward);
    motion_.setDuration(std::max(1, appearance_.motionMs()));
    show();
    raise();
    if (!wasThere) motion_.start();
    place();
}

void Pill::leave() {
    leaving_.stop();
    if (isHidden() || motion_.direction() == QAbstractAnimation::Backward) return;
    motion_.setDirection(QAbstractAnimation::Backward);
    motion_.setDuration(std::max(1, appearance_.motionMs()));
    motion_.start();
}

void Pill::place() {
    const bool still = motion_.state() == QAbstractAnimation::Stopped &&
                       motion_.direction() == QAbstractAnimation::Forward;
    const double there = still ? 1 : motion_.currentValue().toDouble();
    const int width = std::min(sizeHint().width(), window_->width() - 32);
    setGeometry((window_->width() - width) / 2,
                window_->height() - bottomPx_ - heightPx + int((1 - there) * risePx), width,
                heightPx);
    update();
}

void Pill::paintEvent(QPaintEvent*) {
    const Theme& theme = appearance_.theme();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF body = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(QPen(blended(theme.hairline, theme.control), 1));
    painter.setBrush(theme.control);
    painter.drawRoundedRect(body, heightPx / 2.0, heightPx / 2.0);
    if (!share_) return;
    const QRectF track(16, heightPx - 6, width() - 32, 2);
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
