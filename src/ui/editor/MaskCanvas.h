// Masks on the canvas: the handles of gradients and ellipses, the brush and its cursor. Keeps what
// is selected; what becomes of shapes and strokes is worked out in editor/. Main thread.
#pragma once

#include "editor/EditorModel.h"
#include "editor/MaskHandles.h"
#include "editor/MaskTools.h"
#include "editor/StrokeBuilder.h"
#include "ui/editor/CanvasTool.h"

#include <QColor>

#include <functional>

namespace kelvaro {

class MaskCanvas final : public CanvasTool {
public:
    explicit MaskCanvas(EditorModel& editor) : editor_(editor) {}

    const MaskToolState& state() const { return state_; }
    void setState(const MaskToolState& state);
    void setBrush(const BrushTool& brush);
    void setAccent(const QColor& accent) { accent_ = accent; }
    // What is selected follows the edit.
    void follow();
    // The next drag beside the selected shape's handles draws it from scratch.
    void drawShapeNext() { drawsShape_ = true; }

    std::function<void()> onChanged; // the state

    void paint(QPainter& painter, const CanvasView& view) override;
    std::optional<QRectF> spot(const CanvasView& view) const override;
    bool press(const CanvasPointer& pointer, const CanvasView& view) override;
    void drag(const CanvasPointer& pointer, const CanvasView& view) override;
    void release(const CanvasPointer& pointer, const CanvasView& view) override;
    void hover(const std::optional<CanvasPointer>& pointer, const CanvasView& view) override;
    std::optional<QCursor> cursor(Point at, const CanvasView& view) override;
    bool key(QKeyEvent& event) override;
    void cancel() override;

private:
    const MaskComponent* shape() const;
    MaskComponent* shapeOf(Adjustments& edit) const;
    PhotoPlacement place(const CanvasView& view) const;
    bool isBrush() const;
    void beginStroke(const CanvasPointer& pointer, const CanvasView& view);
    bool letGo();
    void moveShape(const CanvasPointer& pointer, const CanvasView& view);
    void paintShape(QPainter& painter, const MaskComponent& shape, const CanvasView& view,
                    bool selected) const;
    void paintPins(QPainter& painter, const CanvasView& view) const;
    void paintBrush(QPainter& painter, const CanvasView& view) const;
    std::optional<std::pair<Uuid, Uuid>> pinAt(Point at, const CanvasView& view) const;
    void changed() const {
        if (onChanged) onChanged();
    }

    EditorModel& editor_;
    MaskToolState state_;
    QColor accent_{0x4c, 0x8d, 0xff};
    std::optional<StrokeBuilder> stroke_;
    std::optional<MaskHandle> handle_;
    bool drawsShape_ = false, drawing_ = false;
    MaskComponent startShape_;
    Point startPoint_;
    std::optional<Point> pointer_;
    std::optional<MaskHandle> hovered_;
};

} // namespace kelvaro
