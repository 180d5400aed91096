#include "ui/editor/MaskCanvas.h"

#include "editor/MaskList.h"

#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace kelvaro {
namespace {

constexpr double pinReach = 12;
constexpr double signPx = 4; // half of the plus or minus of the brush

QPainterPath pathOf(const std::vector<Point>& points) {
    QPainterPath path;
    for (std::size_t at = 0; at < points.size(); ++at)
        at == 0 ? path.moveTo(pointOf(points[at])) : path.lineTo(pointOf(points[at]));
    return path;
}

// A line across the view through a point of a gradient, at right angles to it.
QPainterPath acrossAt(Point at, Point along, double length) {
    const double size = std::hypot(along.x, along.y);
    QPainterPath path;
    if (!(size > 0)) return path;
    const QPointF across(-along.y / size * length, along.x / size * length);
    path.moveTo(pointOf(at) - across);
    path.lineTo(pointOf(at) + across);
    return path;
}

Point middleOf(const MaskComponent& shape) {
    if (shape.kind == MaskComponent::Kind::radial) return {shape.start.x, shape.start.y};
    if (shape.kind == MaskComponent::Kind::linear)
        return {(shape.start.x + shape.end.x) / 2, (shape.start.y + shape.end.y) / 2};
    if (shape.strokes.empty() || shape.strokes.front().points.empty()) return {-1, -1};
    const MaskPoint first = shape.strokes.front().points.front();
    return {first.x, first.y};
}

} // namespace

void MaskCanvas::setState(const MaskToolState& state) {
    state_ = consistent(state, editor_.edit());
    drawsShape_ = false;
    changed();
}

void MaskCanvas::setBrush(const BrushTool& brush) {
    state_.brush = brush;
    changed();
}

void MaskCanvas::follow() {
    const MaskToolState next = consistent(state_, editor_.edit());
    if (next == state_) return;
    state_ = next;
    changed();
}

const MaskComponent* MaskCanvas::shape() const {
    const LocalMask* mask = state_.mask ? findMask(editor_.edit(), *state_.mask) : nullptr;
    if (!mask || !state_.shape) return nullptr;
    const auto found = std::ranges::find(mask->components, *state_.shape, &MaskComponent::id);
    return found == mask->components.end() ? nullptr : &*found;
}

MaskComponent* MaskCanvas::shapeOf(Adjustments& edit) const {
    LocalMask* mask = state_.mask ? findMask(edit, *state_.mask) : nullptr;
    return mask && state_.shape ? findShape(*mask, *state_.shape) : nullptr;
}

PhotoPlacement MaskCanvas::place(const CanvasView& view) const {
    return PhotoPlacement::ofPicture(view, editor_.edit(), editor_.photo().size);
}

bool MaskCanvas::isBrush() const {
    const MaskComponent* selected = shape();
    return selected && selected->kind == MaskComponent::Kind::brush;
}

// --- Hand ---

bool MaskCanvas::press(const CanvasPointer& pointer, const CanvasView& view) {
    pointer_ = pointer.at;
    const MaskComponent* selected = shape();
    if (editor_.isReadOnly()) return false;
    if (selected && isBrush()) {
        beginStroke(pointer, view);
        return true;
    }
    if (selected) {
        startShape_ = *selected;
        startPoint_ = pointer.at;
        handle_ = maskHandleAt(pointer.at, *selected, place(view));
        drawing_ = drawsShape_ && !handle_;
        if ((handle_ || drawing_) && editor_.beginChange("Mask Shape")) return true;
    }
    handle_.reset();
    if (const auto pin = pinAt(pointer.at, view)) {
        state_.mask = pin->first;
        state_.shape = pin->second;
        changed();
        return true;
    }
    return false;
}

void MaskCanvas::beginStroke(const CanvasPointer& pointer, const CanvasView& view) {
    BrushTool brush = state_.brush;
    brush.optionHeld = pointer.held & Qt::AltModifier;
    state_.brush = brush;
    if (!editor_.beginChange(brush.erases() ? "Erase" : "Paint")) return;
    stroke_.emplace(brush, pointer.isPen);
    state_.isPainting = true;
    changed();
    const MaskPoint at = place(view).toMask(pointer.at);
    editor_.change("Paint", [&](Adjustments& edit) {
        MaskComponent* painted = shapeOf(edit);
        if (!painted) return;
        // A click with Shift goes straight on from where the last stroke ended.
        pointer.held& Qt::ShiftModifier ? stroke_->beginFromLast(*painted, at, pointer.pressure)
                                        : stroke_->begin(*painted, at, pointer.pressure);
    });
}

void MaskCanvas::drag(const CanvasPointer& pointer, const CanvasView& view) {
    pointer_ = pointer.at;
    if (!stroke_) return moveShape(pointer, view);
    const MaskPoint at = place(view).toMask(pointer.at);
    editor_.change("Paint", [&](Adjustments& edit) {
        if (MaskComponent* painted = shapeOf(edit)) stroke_->add(*painted, at, pointer.pressure);
    });
}

void MaskCanvas::moveShape(const CanvasPointer& pointer, const CanvasView& view) {
    if (!handle_ && !drawing_) return;
    const PhotoPlacement where = place(view);
    std::optional<MaskComponent> next;
    if (drawing_)
        next = drawnShape(startShape_, startPoint_, pointer.at, where);
    else
        next = draggedShape(startShape_, *handle_, startPoint_, pointer.at, where,
                            pointer.held & Qt::ShiftModifier);
    if (!next) return;
    editor_.change("Mask Shape", [&](Adjustments& edit) {
        if (MaskComponent* moved = shapeOf(edit)) *moved = *next;
    });
}

void MaskCanvas::release(const CanvasPointer& pointer, const CanvasView&) {
    pointer_ = pointer.at;
    drawsShape_ = false;
    if (letGo()) editor_.endChange();
    changed();
}

void MaskCanvas::cancel() {
    if (letGo()) editor_.cancelChange();
    changed();
}

// Whether anything was held.
bool MaskCanvas::letGo() {
    const bool held = stroke_ || handle_ || drawing_;
    stroke_.reset();
    handle_.reset();
    drawing_ = state_.isPainting = false;
    return held;
}

void MaskCanvas::hover(const std::optional<CanvasPointer>& pointer, const CanvasView& view) {
    pointer_ = pointer ? std::optional(pointer->at) : std::nullopt;
    hovered_.reset();
    if (!pointer) return;
    const bool option = pointer->held & Qt::AltModifier;
    if (state_.brush.optionHeld != option) {
        state_.brush.optionHeld = option;
        changed();
    }
    if (const MaskComponent* selected = shape(); selected && !isBrush())
        hovered_ = maskHandleAt(pointer->at, *selected, place(view));
}

std::optional<QCursor> MaskCanvas::cursor(Point at, const CanvasView& view) {
    if (editor_.isReadOnly()) return std::nullopt;
    if (isBrush()) return Qt::BlankCursor; // the brush's own circle is drawn
    const MaskComponent* selected = shape();
    if (!selected)
        return pinAt(at, view) ? std::optional<QCursor>(Qt::PointingHandCursor) : std::nullopt;
    const auto handle = handle_ ? handle_ : maskHandleAt(at, *selected, place(view));
    if (!handle) return drawsShape_ ? std::optional<QCursor>(Qt::CrossCursor) : std::nullopt;
    return *handle == MaskHandle::move ? Qt::SizeAllCursor : Qt::PointingHandCursor;
}

bool MaskCanvas::key(QKeyEvent& event) {
    if (!isBrush()) return false;
    const bool softer = event.modifiers() & Qt::ShiftModifier;
    const bool larger = event.key() == Qt::Key_BracketRight || event.key() == Qt::Key_BraceRight;
    const bool smaller = event.key() == Qt::Key_BracketLeft || event.key() == Qt::Key_BraceLeft;
    if (!larger && !smaller) return false;
    const int steps = larger ? 1 : -1;
    setBrush(softer ? softened(state_.brush, steps) : resized(state_.brush, steps));
    return true;
}

// --- Painting ---

void MaskCanvas::paint(QPainter& painter, const CanvasView& view) {
    const MaskComponent* selected = shape();
    paintPins(painter, view);
    if (selected && !isBrush()) paintShape(painter, *selected, view, true);
    if (selected && isBrush()) paintBrush(painter, view);
}

void MaskCanvas::paintShape(QPainter& painter, const MaskComponent& shape, const CanvasView& view,
                            bool selected) const {
    const PhotoPlacement where = place(view);
    if (shape.kind == MaskComponent::Kind::linear) {
        const Point from = where.toView(shape.start), to = where.toView(shape.end);
        const Point along{to.x - from.x, to.y - from.y};
        const double far = view.view.width + view.view.height;
        drawLegible(painter, acrossAt(from, along, far));
        drawLegible(painter, acrossAt({(from.x + to.x) / 2, (from.y + to.y) / 2}, along, far), 1,
                    Qt::DashLine);
        drawLegible(painter, acrossAt(to, along, far));
        QPainterPath line(pointOf(from));
        line.lineTo(pointOf(to));
        drawLegible(painter, line, 1);
    } else {
        drawLegible(painter, pathOf(ellipseOutline(shape, 1, where)));
        drawLegible(painter, pathOf(ellipseOutline(shape, innerShare(shape), where)), 1,
                    Qt::DashLine);
    }
    if (!selected) return;
    for (const MaskHandlePoint& handle : maskHandles(shape, where))
        drawHandle(painter, pointOf(handle.at),
                   handle_ == handle.handle || hovered_ == handle.handle, accent_);
}

// A pin for each shape that is not selected: a click selects it.
void MaskCanvas::paintPins(QPainter& painter, const CanvasView& view) const {
    const PhotoPlacement where = place(view);
    if (state_.isPainting) return;
    for (const LocalMask& mask : editor_.edit().masks) {
        for (const MaskComponent& component : mask.components) {
            const Point middle = middleOf(component);
            if (middle.x == -1 || (state_.shape && component.id == *state_.shape)) continue;
            const QPointF at = pointOf(where.toView(MaskPoint{middle.x, middle.y}));
            painter.setPen(QPen(QColor(0, 0, 0, 140), 1));
            painter.setBrush(mask.enabled ? QColor(255, 255, 255, 225)
                                          : QColor(150, 150, 150, 200));
            painter.drawEllipse(at, 7, 7);
            painter.setPen(Qt::NoPen);
            painter.setBrush(mask.enabled ? QColor(255, 116, 0) : QColor(90, 90, 90));
            painter.drawEllipse(at, 3.5, 3.5);
        }
    }
}

std::optional<std::pair<Uuid, Uuid>> MaskCanvas::pinAt(Point at, const CanvasView& view) const {
    const PhotoPlacement where = place(view);
    for (const LocalMask& mask : editor_.edit().masks) {
        for (const MaskComponent& component : mask.components) {
            const Point middle = middleOf(component);
            if (middle.x == -1) continue;
            const Point pin = where.toView(MaskPoint{middle.x, middle.y});
            if (std::hypot(pin.x - at.x, pin.y - at.y) <= pinReach)
                return std::pair(mask.id, component.id);
        }
    }
    return std::nullopt;
}

// With a brush only its cursor follows the pointer.
std::optional<QRectF> MaskCanvas::spot(const CanvasView& view) const {
    if (!isBrush()) return std::nullopt;
    if (!pointer_) return QRectF();
    const double reach =
        std::max(brushCursor(state_.brush, place(view).pointsPerMaskUnit()).outer, signPx) + 3;
    return QRectF(pointer_->x - reach, pointer_->y - reach, 2 * reach, 2 * reach);
}

void MaskCanvas::paintBrush(QPainter& painter, const CanvasView& view) const {
    if (!pointer_) return;
    const BrushCursor cursor = brushCursor(state_.brush, place(view).pointsPerMaskUnit());
    const QPointF at = pointOf(*pointer_);
    QPainterPath outer, inner, sign;
    outer.addEllipse(at, cursor.outer, cursor.outer);
    drawLegible(painter, outer);
    if (cursor.inner > 2 && cursor.outer - cursor.inner > 2) {
        inner.addEllipse(at, cursor.inner, cursor.inner);
        drawLegible(painter, inner, 1, Qt::DashLine);
    }
    sign.moveTo(at - QPointF(signPx, 0));
    sign.lineTo(at + QPointF(signPx, 0));
    if (!cursor.erases) {
        sign.moveTo(at - QPointF(0, signPx));
        sign.lineTo(at + QPointF(0, signPx));
    }
    drawLegible(painter, sign, 1.5);
}

} // namespace kelvaro
