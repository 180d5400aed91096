#include "ui/editor/CropCanvas.h"

#include "ui/Texts.h"

#include <QPainterPath>

namespace kelvaro {
namespace {

const QColor surround(0, 0, 0, 153); // 60%
constexpr double cornerLength = 18;

// Upright boxes have y up from the view's upper edge.
QRectF rectOf(const Box& upright) {
    return {upright.minX(), -upright.maxY(), upright.width, upright.height};
}

Qt::CursorShape shapeOf(CropHandle handle) {
    switch (handle) {
    case CropHandle::move:
        return Qt::SizeAllCursor;
    case CropHandle::left:
    case CropHandle::right:
        return Qt::SizeHorCursor;
    case CropHandle::top:
    case CropHandle::bottom:
        return Qt::SizeVerCursor;
    case CropHandle::topLeft:
    case CropHandle::bottomRight:
        return Qt::SizeFDiagCursor;
    case CropHandle::topRight:
    case CropHandle::bottomLeft:
        return Qt::SizeBDiagCursor;
    case CropHandle::rotate:
        break;
    }
    return Qt::PointingHandCursor;
}

} // namespace

void CropCanvas::paint(QPainter& painter, const CanvasView& view) {
    const auto drawn = tool_.drawnCrop(view);
    if (!drawn) return;
    const QRectF crop = rectOf(*drawn);
    const QRectF all(0, 0, view.view.width, view.view.height);
    QPainterPath outside;
    outside.addRect(all);
    outside.addRect(crop);
    painter.fillPath(outside, surround);
    paintFrame(painter, crop);
    if (lineFrom_) {
        QPainterPath line(pointOf(*lineFrom_));
        line.lineTo(pointOf(pointer_));
        drawLegible(painter, line);
    }
    if (tool_.state().rotating)
        drawTag(painter, pointOf(pointer_) + QPointF(18, 14),
                fromUtf8(straightenText(editor_.edit().straighten)), all);
}

void CropCanvas::paintFrame(QPainter& painter, const QRectF& crop) const {
    painter.setRenderHint(QPainter::Antialiasing, false);
    const QRectF frame(crop.topLeft().toPoint(), crop.bottomRight().toPoint());
    if (tool_.state().dragging) {
        QColor line(255, 255, 255, 120);
        // Thirds to compose by; a finer grid to level by.
        const int parts = tool_.state().rotating ? 9 : 3;
        painter.setPen(QPen(line, 1));
        for (int part = 1; part < parts; ++part) {
            const double share = double(part) / parts;
            const double x = frame.left() + share * frame.width();
            const double y = frame.top() + share * frame.height();
            painter.drawLine(QPointF(x, frame.top()), QPointF(x, frame.bottom()));
            painter.drawLine(QPointF(frame.left(), y), QPointF(frame.right(), y));
        }
    }
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(255, 255, 255, 220), 1));
    painter.drawRect(frame);
    const double length = std::min({cornerLength, frame.width() / 3, frame.height() / 3});
    for (const double x : {frame.left(), frame.right()}) {
        for (const double y : {frame.top(), frame.bottom()}) {
            const double toRight = x == frame.left() ? 1 : -1, down = y == frame.top() ? 1 : -1;
            const QRectF across(QPointF(x - toRight * 2, y - down * 2),
                                QPointF(x + toRight * length, y + down));
            const QRectF along(QPointF(x - toRight * 2, y - down * 2),
                               QPointF(x + toRight, y + down * length));
            painter.fillRect(across.normalized(), Qt::white);
            painter.fillRect(along.normalized(), Qt::white);
        }
    }
    painter.setRenderHint(QPainter::Antialiasing, true);
}

bool CropCanvas::press(const CanvasPointer& pointer, const CanvasView& view) {
    pointer_ = pointer.at;
    if (editor_.isReadOnly()) return true;
    if (drawsHorizon_) {
        lineFrom_ = pointer.at;
        return true;
    }
    tool_.begin(pointer.at, view);
    changed();
    return true;
}

void CropCanvas::drag(const CanvasPointer& pointer, const CanvasView& view) {
    pointer_ = pointer.at;
    if (!lineFrom_) tool_.drag(pointer.at, view);
}

void CropCanvas::release(const CanvasPointer& pointer, const CanvasView& view) {
    std::optional<std::string> notice;
    if (lineFrom_) {
        notice = tool_.straightenAlong(*lineFrom_, pointer.at, view);
        lineFrom_.reset();
        drawsHorizon_ = false;
    } else {
        notice = tool_.end();
    }
    changed();
    if (notice && onNotice) onNotice(*notice);
}

void CropCanvas::hover(const std::optional<CanvasPointer>& pointer, const CanvasView&) {
    if (pointer) pointer_ = pointer->at;
}

std::optional<QCursor> CropCanvas::cursor(Point at, const CanvasView& view) {
    if (editor_.isReadOnly()) return Qt::ArrowCursor;
    if (drawsHorizon_) return Qt::CrossCursor;
    const auto handle = tool_.active() ? tool_.active() : tool_.handleAt(at, view);
    if (!handle) return std::nullopt;
    return QCursor(shapeOf(*handle));
}

void CropCanvas::cancel() {
    lineFrom_.reset();
    tool_.cancel();
    changed();
}

} // namespace kelvaro
