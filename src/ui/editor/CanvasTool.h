// What the hand does on the canvas while a tool is on: a tool draws over the photo and takes the
// pointer and keys. View points with y down. Main thread.
#pragma once

#include "editor/CanvasView.h"

#include <QCursor>
#include <QKeyEvent>
#include <QPainter>

#include <optional>

namespace kelvaro {

// One position of a mouse or pen.
struct CanvasPointer {
    Point at;
    Qt::KeyboardModifiers held;
    double pressure = 1; // of a pen, 0 … 1
    bool isPen = false;
};

class CanvasTool {
public:
    virtual ~CanvasTool() = default;
    virtual void paint(QPainter& painter, const CanvasView& view) = 0;
    // All of what it draws that moves with the pointer; none: anything may.
    virtual std::optional<QRectF> spot(const CanvasView&) const { return std::nullopt; }
    // Whether the tool takes the drag; else the hand moves the photo.
    virtual bool press(const CanvasPointer& pointer, const CanvasView& view) = 0;
    virtual void drag(const CanvasPointer& pointer, const CanvasView& view) = 0;
    virtual void release(const CanvasPointer& pointer, const CanvasView& view) = 0;
    // The pointer moves with nothing pressed; none when it has left.
    virtual void hover(const std::optional<CanvasPointer>& pointer, const CanvasView& view) = 0;
    // None for the hand's own cursor.
    virtual std::optional<QCursor> cursor(Point at, const CanvasView& view) = 0;
    virtual bool doubleClick(const CanvasPointer&, const CanvasView&) { return false; }
    virtual bool key(QKeyEvent&) { return false; }
    // The drag ends without effect.
    virtual void cancel() {}
};

// Lines that read on any picture: light, with a dark hairline on both sides.
void drawLegible(QPainter& painter, const QPainterPath& path, double widthPx = 1.5,
                 Qt::PenStyle style = Qt::SolidLine);
// A round handle of 10 px.
void drawHandle(QPainter& painter, QPointF at, bool active, const QColor& accent);
// A small label with a dark ground beside the pointer.
void drawTag(QPainter& painter, QPointF at, const QString& text, const QRectF& inside);

inline QPointF pointOf(Point p) {
    return {p.x, p.y};
}

} // namespace kelvaro
