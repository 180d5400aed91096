// The white balance picker: a loupe under the pointer, and a click that measures. Main thread.
#pragma once

#include "ui/editor/CanvasTool.h"
#include "ui/editor/EditorCanvas.h"

#include <functional>

namespace kelvaro {

class PickCanvas final : public CanvasTool {
public:
    explicit PickCanvas(const EditorCanvas& canvas) : canvas_(canvas) {}

    // A point of the photo: pixels, y up, before straightening.
    std::function<void(Point viewPoint)> onPicked;

    void paint(QPainter& painter, const CanvasView& view) override;
    bool press(const CanvasPointer& pointer, const CanvasView& view) override;
    void drag(const CanvasPointer& pointer, const CanvasView& view) override;
    void release(const CanvasPointer& pointer, const CanvasView& view) override;
    void hover(const std::optional<CanvasPointer>& pointer, const CanvasView& view) override;
    std::optional<QCursor> cursor(Point, const CanvasView&) override { return Qt::CrossCursor; }

private:
    const EditorCanvas& canvas_;
    std::optional<Point> pointer_;
};

} // namespace kelvaro
