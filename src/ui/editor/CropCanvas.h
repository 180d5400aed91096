// The crop tool on the canvas: the surround dimmed, a thin frame with heavier corners, thirds while
// dragging, the angle beside the pointer while turning, a line along a horizon. Main thread.
#pragma once

#include "editor/CropTool.h"
#include "ui/editor/CanvasTool.h"

#include <functional>

namespace kelvaro {

class CropCanvas final : public CanvasTool {
public:
    explicit CropCanvas(EditorModel& editor) : tool_(editor), editor_(editor) {}

    CropTool& tool() { return tool_; }
    // The next drag draws a line that becomes level or upright.
    void setDrawsHorizon(bool draws) { drawsHorizon_ = draws; }
    bool drawsHorizon() const { return drawsHorizon_; }

    std::function<void()> onChanged; // the crop state, or what is drawn next
    std::function<void(const std::string&)> onNotice;

    void paint(QPainter& painter, const CanvasView& view) override;
    bool press(const CanvasPointer& pointer, const CanvasView& view) override;
    void drag(const CanvasPointer& pointer, const CanvasView& view) override;
    void release(const CanvasPointer& pointer, const CanvasView& view) override;
    void hover(const std::optional<CanvasPointer>& pointer, const CanvasView& view) override;
    std::optional<QCursor> cursor(Point at, const CanvasView& view) override;
    bool doubleClick(const CanvasPointer&, const CanvasView&) override { return false; }
    void cancel() override;

private:
    void paintFrame(QPainter& painter, const QRectF& crop) const;
    void changed() const {
        if (onChanged) onChanged();
    }

    CropTool tool_;
    EditorModel& editor_;
    bool drawsHorizon_ = false;
    std::optional<Point> lineFrom_;
    Point pointer_;
};

} // namespace kelvaro
