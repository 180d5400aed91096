#include "ui/viewer/PhotoCanvas.h"

#include <QPainter>

#include <algorithm>

namespace kelvaro {

QImage imageOf(const std::shared_ptr<const Bitmap>& pixels) {
    auto* owner = new std::shared_ptr<const Bitmap>(pixels);
    const auto format = pixels->channels == 4 ? QImage::Format_RGBX8888 : QImage::Format_RGB888;
    return QImage(
        pixels->row<uchar>(0), pixels->size.width, pixels->size.height,
        static_cast<qsizetype>(pixels->rowBytes()), format,
        [](void* kept) { delete static_cast<std::shared_ptr<const Bitmap>*>(kept); }, owner);
}

PhotoCanvas::PhotoCanvas(const Appearance& appearance, RenderEngine& engine,
                         PhotoSessionCache& sessions, QWidget* parent)
    : QWidget(parent), appearance_(appearance), session_(engine, sessions) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(64, 64);
    resizing_.setSingleShot(true);
    resizing_.setInterval(60);
    QObject::connect(&resizing_, &QTimer::timeout, this, [this] { ask(); });
}

PixelSize PhotoCanvas::fit() const {
    const double ratio = devicePixelRatioF();
    const auto room = [ratio](int side) {
        return std::max(1, static_cast<int>((side - 2 * air) * ratio));
    };
    return {room(width()), room(height())};
}

void PhotoCanvas::show(const std::filesystem::path& photo, const Adjustments& edit,
                       const QImage& standIn) {
    open_ = true;
    edit_ = edit;
    failure_.clear();
    picture_ = standIn;
    isStandIn_ = true;
    pictureSize_ = standIn.size().scaled(QSize(fit().width, fit().height), Qt::KeepAspectRatio);
    update();
    session_.open(photo);
    ask();
}

void PhotoCanvas::close() {
    open_ = false;
    session_.close();
    picture_ = {};
    update();
}

void PhotoCanvas::setEdit(const Adjustments& edit) {
    if (!open_ || edit == edit_) return;
    edit_ = edit;
    ask();
}

void PhotoCanvas::prepare(std::vector<RenderSession::Neighbour> neighbours) {
    session_.prepare(std::move(neighbours));
}

void PhotoCanvas::ask() {
    if (!open_) return;
    ViewRequest request;
    request.edit = edit_;
    request.fit = fit();
    session_.render(request, [this](const Result<RenderedView>& view) { take(view); });
}

void PhotoCanvas::take(const Result<RenderedView>& view) {
    if (!view) {
        failure_ = QString::fromStdString(view.error().message);
        if (isStandIn_) picture_ = {};
        if (onFailed) onFailed(failure_);
        update();
        return;
    }
    picture_ = imageOf(view->pixels);
    if (profile_.isValid()) {
        picture_.convertTo(QImage::Format_RGB32);
        picture_.setColorSpace(QColorSpace::SRgb);
        picture_.convertToColorSpace(profile_);
    }
    isStandIn_ = false;
    pictureSize_ = {view->pictureSize.width, view->pictureSize.height};
    update();
    session_.displayed(view->frame);
}

void PhotoCanvas::paintEvent(QPaintEvent*) {
    const Theme& theme = appearance_.theme();
    QPainter painter(this);
    painter.fillRect(rect(), theme.canvas);
    if (picture_.isNull()) {
        painter.setFont(interfaceFont());
        painter.setPen(theme.secondary);
        painter.drawText(rect().adjusted(air, air, -air, -air), Qt::AlignCenter | Qt::TextWordWrap,
                         failure_);
        return;
    }
    const double ratio = devicePixelRatioF();
    // On whole device pixels, so that a final picture is not resampled.
    const auto middle = [ratio](int side, int shown) {
        return std::floor((side * ratio - shown) / 2) / ratio;
    };
    const QRectF target(middle(width(), pictureSize_.width()),
                        middle(height(), pictureSize_.height()), pictureSize_.width() / ratio,
                        pictureSize_.height() / ratio);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, picture_.size() != pictureSize_);
    painter.drawImage(target, picture_);
}

void PhotoCanvas::resizeEvent(QResizeEvent*) {
    if (open_) resizing_.start();
}

} // namespace kelvaro
