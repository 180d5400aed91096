#include "ui/editor/CanvasFrame.h"

#include "ui/editor/FrameEnlarging.h"

#include <cmath>

namespace kelvaro {
namespace {

constexpr int checkerPx = 8;

QBrush checker() {
    QImage tile(2 * checkerPx, 2 * checkerPx, QImage::Format_RGB32);
    tile.fill(QColor(168, 168, 168));
    QPainter painter(&tile);
    const QColor light(204, 204, 204);
    painter.fillRect(0, 0, checkerPx, checkerPx, light);
    painter.fillRect(checkerPx, checkerPx, checkerPx, checkerPx, light);
    painter.end();
    return QBrush(tile);
}

bool isClose(double a, double b) {
    return std::abs(a - b) < 0.01;
}

} // namespace

QImage imageOf(const std::shared_ptr<const Bitmap>& pixels) {
    auto* owner = new std::shared_ptr<const Bitmap>(pixels);
    const auto format = pixels->channels == 4 ? QImage::Format_RGBA8888 : QImage::Format_RGB888;
    return QImage(
        pixels->row<uchar>(0), pixels->size.width, pixels->size.height,
        static_cast<qsizetype>(pixels->rowBytes()), format,
        [](void* kept) { delete static_cast<std::shared_ptr<const Bitmap>*>(kept); }, owner);
}

bool CanvasFrame::coversPicture() const {
    return rect.x <= 0 && rect.y <= 0 && rect.right() >= pictureSize.width &&
           rect.top() >= pictureSize.height;
}

CanvasFrame frameOf(const RenderedView& view, bool whole, const QColorSpace& profile) {
    CanvasFrame frame;
    frame.image = imageOf(view.pixels);
    // What the window's memory holds, so that drawing is copying.
    frame.image.convertTo(frame.image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                        : QImage::Format_RGB32);
    if (profile.isValid()) {
        frame.image.setColorSpace(QColorSpace::SRgb);
        frame.image.convertToColorSpace(profile);
    }
    frame.rect = view.rect;
    frame.pictureSize = view.pictureSize;
    frame.stage = view.stage;
    frame.whole = whole;
    frame.isFinal = view.isFinal;
    frame.number = view.frame;
    frame.view = view.number;
    return frame;
}

PixelRect lay(const CanvasFrame& part, CanvasFrame& over) {
    // Both have pixels of one size, and the part begins on one of the frame's.
    const int coarseness = std::max(1, over.rect.width / std::max(1, over.image.width()));
    const QPoint at((part.rect.x - over.rect.x) / coarseness,
                    (over.rect.top() - part.rect.top()) / coarseness);
    QPainter painter(&over.image);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(at, part.image);
    painter.end();
    over.stage = part.stage;
    over.isFinal = part.isFinal;
    over.isPart = true;
    over.number = part.number;
    over.view = part.view;
    over.asked = part.asked;
    return part.rect;
}

CanvasFrame standInFrame(const QImage& image, bool whole) {
    CanvasFrame frame;
    frame.image = image;
    frame.rect = {0, 0, image.width(), image.height()};
    frame.pictureSize = {image.width(), image.height()};
    frame.whole = whole;
    return frame;
}

QRectF frameInView(const CanvasFrame& frame, const CanvasView& view) {
    const Box shown = view.pictureInView();
    const double ratio = view.pixelRatio;
    if (frame.pictureSize == view.scaledPicture()) {
        const int down = frame.pictureSize.height - frame.rect.top();
        return {shown.x + frame.rect.x / ratio, shown.y + down / ratio, frame.rect.width / ratio,
                frame.rect.height / ratio};
    }
    const double across = shown.width / std::max(1, frame.pictureSize.width);
    const double up = shown.height / std::max(1, frame.pictureSize.height);
    return {shown.x + frame.rect.x * across,
            shown.y + (frame.pictureSize.height - frame.rect.top()) * up, frame.rect.width * across,
            frame.rect.height * up};
}

void drawFrame(QPainter& painter, const CanvasFrame& frame, const QRectF& target,
               double pixelRatio) {
    if (frame.image.isNull() || target.isEmpty()) return;
    if (frame.image.hasAlphaChannel()) {
        static const QBrush pattern = checker();
        painter.setBrushOrigin(target.topLeft());
        painter.fillRect(target, pattern);
    }
    const bool isExact = isClose(target.width() * pixelRatio, frame.image.width()) &&
                         isClose(target.height() * pixelRatio, frame.image.height());
    if (!isExact && drawEnlarged(painter, frame.image, target)) return;
    painter.setRenderHint(QPainter::SmoothPixmapTransform, !isExact);
    painter.drawImage(target, frame.image);
}

} // namespace kelvaro
