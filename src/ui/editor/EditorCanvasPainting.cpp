// How the canvas is painted.
#include "editor/CropRules.h"
#include "ui/Texts.h"
#include "ui/editor/EditorCanvas.h"

#include <QPaintEvent>

#include <cmath>

namespace kelvaro {
namespace {

// Display grey of a lightness of 50, and the white that the eye compares with.
const QColor assessmentGrey(119, 119, 119);
constexpr double assessmentBorder = 14;
constexpr double degreesPerRadian = 57.29577951308232;

} // namespace

Box EditorCanvas::visiblePicture(const CanvasView& view) const {
    const Box shown = view.pictureInView();
    return Box::between(std::max(shown.minX(), 0.0), std::max(shown.minY(), 0.0),
                        std::min(shown.maxX(), double(width())),
                        std::min(shown.maxY(), double(height())));
}

// What the photo covers without showing anything of what lies beneath.
QRect EditorCanvas::coveredArea(const CanvasView& view) const {
    const bool isPlain = open_ && !frame_.image.isNull() && !frame_.image.hasAlphaChannel() &&
                         !frame_.whole && !display_.whole && fading_.image.isNull() &&
                         !display_.split.originalHeld &&
                         growth_.state() != QAbstractAnimation::Running;
    if (!isPlain) return {};
    return frameInView(frame_, view).toAlignedRect().adjusted(2, 2, -2, -2);
}

void EditorCanvas::paintEvent(QPaintEvent* event) {
    const Theme& theme = appearance_.theme();
    QPainter painter(this);
    const CanvasView now = view();
    // Filling a large canvas twice takes as long as drawing the photo.
    for (const QRect& around : event->region() - coveredArea(now))
        painter.fillRect(around, display_.assessment ? assessmentGrey : theme.canvas);
    if (!open_) return;
    if (growth_.state() == QAbstractAnimation::Running) return paintGrowing(painter, now);
    if (frame_.image.isNull() && backdrop_.image.isNull()) {
        painter.setFont(interfaceFont());
        painter.setPen(display_.assessment ? QColor(255, 255, 255) : theme.secondary);
        const int air = static_cast<int>(CanvasView::fitMarginPoints);
        painter.drawText(rect().adjusted(air, air, -air, -air), Qt::AlignCenter | Qt::TextWordWrap,
                         failure_);
        return;
    }
    if (display_.assessment) {
        const Box shown = now.pictureInView();
        painter.fillRect(
            QRectF(shown.x, shown.y, shown.width, shown.height)
                .adjusted(-assessmentBorder, -assessmentBorder, assessmentBorder, assessmentBorder),
            Qt::white);
    }
    paintPhoto(painter, now);
    if (display_.split.isSplit && !display_.split.originalHeld) paintSplit(painter, now);
    painter.setRenderHint(QPainter::Antialiasing);
    if (tool_ && !display_.split.originalHeld) tool_->paint(painter, now);
    paintZoom(painter);
    if (undisplayed_ != 0) session_.displayed(std::exchange(undisplayed_, 0));
    if (onPainted) onPainted(frame_);
}

// The photo turned about its middle under an upright crop, where the whole of it is shown.
void EditorCanvas::paintFrame(QPainter& painter, const CanvasFrame& frame, const CanvasView& view) {
    if (frame.image.isNull()) return;
    CanvasView place = view;
    QRectF target = frameInView(frame, place);
    if (frame.whole != display_.whole) {
        // For the moment until the other kind of frame is there: where its part of the photo lies.
        const Box crop = cropBox(edit_, photoSize_);
        const Box shown = view.pictureInView();
        const double points = view.pointsPerPixel();
        target = display_.whole ? QRectF(shown.x + crop.x * points,
                                         shown.y + (photoSize_.height - crop.maxY()) * points,
                                         crop.width * points, crop.height * points)
                                : QRectF(shown.x - crop.x * points,
                                         shown.y - (photoSize_.height - crop.maxY()) * points,
                                         photoSize_.width * points, photoSize_.height * points);
        return drawFrame(painter, frame, target, view.pixelRatio);
    }
    const double turn = frame.whole ? -turnOf(edit_) * degreesPerRadian : 0;
    if (turn == 0) return drawFrame(painter, frame, target, view.pixelRatio);
    const Box shown = view.pictureInView();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(shown.centre().x, shown.centre().y);
    painter.rotate(turn);
    painter.translate(-shown.centre().x, -shown.centre().y);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(target, frame.image);
    painter.restore();
}

void EditorCanvas::paintPhoto(QPainter& painter, const CanvasView& view) {
    const bool original = display_.split.originalHeld && !beforeFrame_.image.isNull();
    const CanvasFrame& shown = original ? beforeFrame_ : frame_;
    painter.save();
    // Beneath a part that is not there yet lies the whole, less sharp.
    const bool coversView = shown.coversPicture() || shown.rect.contains(view.visiblePixels());
    const bool isAtScale = shown.pictureSize == view.scaledPicture();
    if ((!coversView || !isAtScale) && !backdrop_.image.isNull() && !original)
        paintFrame(painter, backdrop_, view);
    if (!fading_.image.isNull()) {
        paintFrame(painter, fading_, view);
        painter.setOpacity(fade_.currentValue().toDouble());
    }
    paintFrame(painter, shown, view);
    painter.restore();
}

void EditorCanvas::paintSplit(QPainter& painter, const CanvasView& view) {
    const SplitAreas areas = splitAreas(display_.split, visiblePicture(view));
    const QRectF left(areas.before.x, areas.before.y, areas.before.width, areas.before.height);
    if (!beforeFrame_.image.isNull()) {
        painter.save();
        painter.setClipRect(left);
        paintFrame(painter, beforeFrame_, view);
        painter.restore();
    }
    const double top = left.top(), bottom = left.bottom();
    const QPointF grip(areas.lineX, (top + bottom) / 2);
    painter.setPen(QPen(QColor(0, 0, 0, 110), 3));
    painter.drawLine(QPointF(areas.lineX, top), QPointF(areas.lineX, bottom));
    painter.setPen(QPen(Qt::white, 1));
    painter.drawLine(QPointF(areas.lineX, top), QPointF(areas.lineX, bottom));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0, 0, 0, 110), 1));
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(QRectF(grip.x() - 3, grip.y() - 14, 6, 28), 3, 3);
    if (!labelsShown_.isActive() && gesture_ != Gesture::split) return;
    const QRectF shown(areas.before.x, top, areas.before.width + areas.after.width, bottom - top);
    drawTag(painter, shown.topLeft() + QPointF(8, 8), words("Before"), shown);
    drawTag(painter, shown.topRight() + QPointF(-8, 8), words("After"), shown);
}

void EditorCanvas::paintGrowing(QPainter& painter, const CanvasView& view) {
    const double share = growth_.currentValue().toDouble();
    const Box shown = view.pictureInView();
    const QRectF end(shown.x, shown.y, shown.width, shown.height), begin(growsFrom_);
    const auto between = [share](double a, double b) { return a + share * (b - a); };
    const QRectF now(between(begin.x(), end.x()), between(begin.y(), end.y()),
                     between(begin.width(), end.width()), between(begin.height(), end.height()));
    const CanvasFrame& frame = frame_.coversPicture() ? frame_ : backdrop_;
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(now, frame.image);
}

void EditorCanvas::paintZoom(QPainter& painter) {
    if (!zoomShown_.isActive()) return;
    drawTag(painter, QPointF(16, height() - 38), QString::fromStdString(zoomText(view_)), rect());
}

} // namespace kelvaro
