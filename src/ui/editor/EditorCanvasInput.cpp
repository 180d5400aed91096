// What the hand does on the canvas.
#include "ui/editor/EditorCanvas.h"

#include <QContextMenuEvent>
#include <QGestureEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPinchGesture>
#include <QTabletEvent>
#include <QWheelEvent>

namespace kelvaro {
namespace {

Point pointAt(QPointF at) {
    return {at.x(), at.y()};
}

CanvasPointer pointerOf(const QMouseEvent& event) {
    return {pointAt(event.position()), event.modifiers(), 1, false};
}

CanvasPointer pointerOf(const QTabletEvent& event) {
    return {pointAt(event.position()), event.modifiers(), event.pressure(),
            event.pointerType() != QPointingDevice::PointerType::Cursor};
}

} // namespace

void EditorCanvas::setTool(CanvasTool* tool) {
    if (tool_ && gesture_ == Gesture::tool) tool_->cancel();
    gesture_ = Gesture::none;
    tool_ = tool;
    toolSpot_.reset();
    showCursor(pointAt(mapFromGlobal(QCursor::pos())));
    update();
}

void EditorCanvas::applyView(const CanvasView& view, bool interactive) {
    if (view == view_) return;
    const bool zooms = view.scale() != view_.scale() || view.zoom != view_.zoom;
    view_ = view;
    if (zooms) zoomShown_.start();
    ask(interactive);
    update();
}

void EditorCanvas::zoomTo(CanvasView::Zoom zoom) {
    applyView(zoomedTo(view_, zoom, {width() / 2.0, height() / 2.0}), false);
}

void EditorCanvas::zoomBy(double factor) {
    applyView(zoomedBy(view_, factor, {width() / 2.0, height() / 2.0}), false);
}

void EditorCanvas::growFrom(const QRect& rect) {
    if (appearance_.motionMs() == 0 || frame_.image.isNull() || !rect.isValid()) return;
    growsFrom_ = rect;
    growth_.setDuration(appearance_.motionMs());
    growth_.start();
}

void EditorCanvas::resizeEvent(QResizeEvent*) {
    view_ = resized(view_, {double(width()), double(height())}, devicePixelRatioF());
    if (open_) ask(true); // a frame in time for each step; refined by itself
}

// --- Pointer ---

void EditorCanvas::press(const CanvasPointer& pointer, Qt::MouseButton button) {
    if (!open_ || gesture_ != Gesture::none) return;
    setFocus(Qt::MouseFocusReason);
    const CanvasView now = view();
    pressedAt_ = lastAt_ = pointer.at;
    const bool isHand = button == Qt::MiddleButton || spaceHeld_;
    if (!isHand && button != Qt::LeftButton) return;
    if (!isHand && display_.split.isSplit &&
        hitsSplitLine(display_.split, visiblePicture(now), pointer.at)) {
        gesture_ = Gesture::split;
    } else if (!isHand && tool_ && tool_->press(pointer, now)) {
        gesture_ = Gesture::tool;
    } else {
        gesture_ = Gesture::hand;
    }
    showCursor(pointer.at);
    update();
}

void EditorCanvas::move(const CanvasPointer& pointer, bool pressed) {
    engine_.work().noteInput(); // work in the background waits for a hand at rest
    const CanvasView now = view();
    switch (gesture_) {
    case Gesture::none:
        if (!pressed && tool_) tool_->hover(pointer, now);
        break;
    case Gesture::tool:
        tool_->drag(pointer, now);
        break;
    case Gesture::split: {
        display_.split = withSplitAt(display_.split, visiblePicture(now), pointer.at.x);
        if (onSplitMoved) onSplitMoved(display_.split.share);
        break;
    }
    case Gesture::hand:
        applyView(panned(view_, {pointer.at.x - lastAt_.x, pointer.at.y - lastAt_.y}), true);
        break;
    }
    lastAt_ = pointer.at;
    showCursor(pointer.at);
    if (gesture_ == Gesture::split) update();
    if (tool_) updateTool();
}

// A tool that draws only at the pointer needs no more than that painted again.
void EditorCanvas::updateTool() {
    const auto before = std::exchange(toolSpot_, tool_->spot(view()));
    if (!toolSpot_) return update();
    update(toolSpot_->toAlignedRect());
    before ? update(before->toAlignedRect()) : update();
}

void EditorCanvas::release(const CanvasPointer& pointer) {
    const Gesture ended = std::exchange(gesture_, Gesture::none);
    if (ended == Gesture::tool && tool_) tool_->release(pointer, view());
    if (ended == Gesture::hand) ask(false);
    showCursor(pointer.at);
    update();
}

void EditorCanvas::mousePressEvent(QMouseEvent* event) {
    press(pointerOf(*event), event->button());
}

void EditorCanvas::mouseMoveEvent(QMouseEvent* event) {
    move(pointerOf(*event), event->buttons() != Qt::NoButton);
}

void EditorCanvas::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::RightButton) release(pointerOf(*event));
}

void EditorCanvas::mouseDoubleClickEvent(QMouseEvent* event) {
    if (!open_ || event->button() != Qt::LeftButton) return;
    const CanvasPointer pointer = pointerOf(*event);
    if (tool_ && tool_->doubleClick(pointer, view())) return update();
    // A tool that takes single presses there takes the second one as well.
    if (tool_ && !spaceHeld_) return press(pointer, event->button());
    applyView(zoomToggled(view_, pointer.at), false);
}

void EditorCanvas::tabletEvent(QTabletEvent* event) {
    const CanvasPointer pointer = pointerOf(*event);
    switch (event->type()) {
    case QEvent::TabletPress:
        press(pointer, event->button());
        break;
    case QEvent::TabletMove:
        move(pointer, event->buttons() != Qt::NoButton);
        break;
    case QEvent::TabletRelease:
        release(pointer);
        break;
    default:
        return event->ignore();
    }
    event->accept();
}

void EditorCanvas::wheelEvent(QWheelEvent* event) {
    if (!open_) return;
    engine_.work().noteInput();
    const double units = event->angleDelta().y() + event->angleDelta().x();
    applyView(zoomedBy(view_, wheelZoomFactor(units), pointAt(event->position())), true);
    event->accept();
}

void EditorCanvas::leaveEvent(QEvent*) {
    if (tool_) tool_->hover(std::nullopt, view());
    update();
}

bool EditorCanvas::event(QEvent* event) {
    if (event->type() == QEvent::Gesture) {
        const auto* pinch = static_cast<QPinchGesture*>(
            static_cast<QGestureEvent*>(event)->gesture(Qt::PinchGesture));
        if (pinch && open_) {
            const QPointF about = mapFromGlobal(pinch->hotSpot());
            applyView(zoomedBy(view_, pinch->scaleFactor(), pointAt(about)), true);
            return true;
        }
    }
    if (event->type() == QEvent::NativeGesture && open_) {
        const auto* gesture = static_cast<QNativeGestureEvent*>(event);
        if (gesture->gestureType() == Qt::ZoomNativeGesture) {
            applyView(zoomedBy(view_, 1 + gesture->value(), pointAt(gesture->position())), true);
            return true;
        }
    }
    return QWidget::event(event);
}

void EditorCanvas::contextMenuEvent(QContextMenuEvent* event) {
    if (open_ && onContextMenu && gesture_ == Gesture::none) onContextMenu(event->globalPos());
}

// --- Keys ---

void EditorCanvas::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat()) {
        spaceHeld_ = true;
        return showCursor(lastAt_);
    }
    if (tool_ && tool_->key(*event)) return update();
    QWidget::keyPressEvent(event);
}

void EditorCanvas::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Space && !event->isAutoRepeat()) {
        spaceHeld_ = false;
        return showCursor(lastAt_);
    }
    QWidget::keyReleaseEvent(event);
}

void EditorCanvas::showCursor(Point at) {
    if (!open_) return unsetCursor();
    const CanvasView now = view();
    if (gesture_ == Gesture::hand) return setCursor(Qt::ClosedHandCursor);
    if (gesture_ == Gesture::split || (display_.split.isSplit && gesture_ == Gesture::none &&
                                       hitsSplitLine(display_.split, visiblePicture(now), at)))
        return setCursor(Qt::SplitHCursor);
    if (!spaceHeld_ && tool_) {
        if (const auto cursor = tool_->cursor(at, now)) return setCursor(*cursor);
    }
    const bool canPan = view_.zoom != CanvasView::Zoom::fit;
    setCursor(spaceHeld_ || canPan ? Qt::OpenHandCursor : Qt::ArrowCursor);
}

} // namespace kelvaro
