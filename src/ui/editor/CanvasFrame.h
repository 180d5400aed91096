// A picture that a render session delivered, ready for the screen, and how it is laid on the canvas
// whatever the zoom is by then. Main thread.
#pragma once

#include "editor/CanvasView.h"
#include "render/ViewRequest.h"

#include <QColorSpace>
#include <QImage>
#include <QPainter>

namespace kelvaro {

struct CanvasFrame {
    QImage image;          // null: nothing yet
    PixelRect rect;        // what it covers of the scaled picture, device pixels, y up
    PixelSize pictureSize; // of the whole scaled picture
    ViewStage stage = ViewStage::preview;
    bool whole = false; // of the uncropped photo
    bool isFinal = false;
    bool isPart = false;      // its newest pixels are a part laid over the others
    std::uint64_t number = 0; // of the timing log
    std::uint64_t view = 0;   // of the render session
    std::uint64_t asked = 0;  // which of the canvas's requests it answers

    bool coversPicture() const;
};

// In the screen's colours; an invalid profile stands for sRGB.
CanvasFrame frameOf(const RenderedView& view, bool whole, const QColorSpace& profile);
// What changed of the frame (RenderedView::over), laid over it. Returns where, in device pixels of
// the scaled picture.
PixelRect lay(const CanvasFrame& part, CanvasFrame& over);
// A small picture of the whole that stands in until something is rendered.
CanvasFrame standInFrame(const QImage& image, bool whole);

// Where the frame lies in view points; exactly on device pixels where its scale is the view's.
QRectF frameInView(const CanvasFrame& frame, const CanvasView& view);
// Over a checker where it is transparent.
void drawFrame(QPainter& painter, const CanvasFrame& frame, const QRectF& target,
               double pixelRatio);

// 8-bit pixels as an image that shares them.
QImage imageOf(const std::shared_ptr<const Bitmap>& pixels);

} // namespace kelvaro
