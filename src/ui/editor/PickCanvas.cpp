#include "ui/editor/PickCanvas.h"

#include "ui/Texts.h"

#include <QPainterPath>

#include <algorithm>

namespace kelvaro {
namespace {

constexpr double loupeRadius = 56;
constexpr int pixelsAcross = 15, pixelPoints = 8; // of the loupe: pixels of the screen, enlarged
constexpr int measuredPixels = 5;

} // namespace

void PickCanvas::paint(QPainter& painter, const CanvasView& view) {
    if (!pointer_) return;
    const QPointF at = pointOf(*pointer_);
    const QRectF all(0, 0, view.view.width, view.view.height);
    // Beside the pointer, on the side where there is room.
    const bool below = at.y() < 2 * loupeRadius + 40;
    const QPointF middle(std::clamp(at.x(), loupeRadius + 8,
                                    std::max(loupeRadius + 8, all.width() - loupeRadius - 8)),
                         at.y() + (below ? 1 : -1) * (loupeRadius + 24));
    QPainterPath circle;
    circle.addEllipse(middle, loupeRadius, loupeRadius);
    painter.save();
    painter.setClipPath(circle);
    painter.fillPath(circle, QColor(40, 40, 40));
    const CanvasFrame& frame = canvas_.frame();
    const QRectF shown = frameInView(frame, view);
    if (!frame.image.isNull() && shown.contains(at)) {
        const double across = frame.image.width() / shown.width();
        const double down = frame.image.height() / shown.height();
        const QPointF pixel((at.x() - shown.x()) * across, (at.y() - shown.y()) * down);
        const double side = pixelsAcross * 1.0;
        painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
        painter.drawImage(
            QRectF(middle.x() - side * pixelPoints / 2, middle.y() - side * pixelPoints / 2,
                   side * pixelPoints, side * pixelPoints),
            frame.image, QRectF(pixel.x() - side / 2, pixel.y() - side / 2, side, side));
    }
    painter.restore();
    drawLegible(painter, circle, 2);
    QPainterPath area;
    const double half = measuredPixels * pixelPoints / 2.0;
    area.addRect(QRectF(middle - QPointF(half, half), QSizeF(2 * half, 2 * half)));
    drawLegible(painter, area, 1);
    drawTag(painter, QPointF(middle.x() - 60, middle.y() + loupeRadius + 6),
            words("Click something grey (Esc to cancel)"), all);
}

bool PickCanvas::press(const CanvasPointer& pointer, const CanvasView&) {
    pointer_ = pointer.at;
    return true;
}

void PickCanvas::drag(const CanvasPointer& pointer, const CanvasView&) {
    pointer_ = pointer.at;
}

void PickCanvas::release(const CanvasPointer& pointer, const CanvasView&) {
    pointer_ = pointer.at;
    if (onPicked) onPicked(pointer.at);
}

void PickCanvas::hover(const std::optional<CanvasPointer>& pointer, const CanvasView&) {
    pointer_ = pointer ? std::optional(pointer->at) : std::nullopt;
}

} // namespace kelvaro
