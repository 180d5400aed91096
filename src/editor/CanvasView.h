// Where the picture lies on the canvas: zoom and panning as a plain value. The picture is what is
// shown (the photo straightened and cropped, or the whole photo in the crop tool), in photo pixels
// with y up; view points are the window's, y down. Any thread.
#pragma once

#include "editor/Box.h"

#include <string>

namespace kelvaro {

struct ViewSize {
    double width = 0, height = 0; // points
    bool operator==(const ViewSize&) const = default;
};

struct CanvasView {
    enum class Zoom { fit, actual, twice, free };

    static constexpr double fitMarginPoints = 24;
    static constexpr double leastScale = 1.0 / 64, mostScale = 16; // device pixels a photo pixel

    ViewSize view;
    PixelSize picture;
    double pixelRatio = 1; // device pixels a point
    Zoom zoom = Zoom::fit;
    double freeScale = 1; // device pixels a photo pixel, for `free`
    Point centre;         // the picture's point in the middle of the view, but for `fit`

    bool operator==(const CanvasView&) const = default;

    bool isDrawable() const;
    // Device pixels a photo pixel; fitting never enlarges.
    double scale() const;
    double pointsPerPixel() const { return scale() / pixelRatio; }
    // The picture in view points (y down), its corner on a whole device pixel, so that 1:1 is
    // exact.
    Box pictureInView() const;
    Point toView(Point picturePoint) const;
    Point toPicture(Point viewPoint) const;
    // What of the scaled picture is visible: whole device pixels, y up from its lower-left corner.
    PixelRect visiblePixels() const;
    PixelSize scaledPicture() const;
};

// What stays under the pointer does so as far as the edges allow: a picture smaller than the view
// is centred, a larger one never leaves a gap.
CanvasView zoomedTo(CanvasView canvas, CanvasView::Zoom zoom, Point aboutViewPoint);
CanvasView zoomedBy(CanvasView canvas, double factor, Point aboutViewPoint);
// One notch of a wheel is 120 units, and a quarter of a doubling.
double wheelZoomFactor(double wheelUnits);
// Fit goes to 1:1 and everything else to fit: a double click.
CanvasView zoomToggled(const CanvasView& canvas, Point aboutViewPoint);
// As the hand drags the picture.
CanvasView panned(CanvasView canvas, Point byViewPoints);
CanvasView resized(CanvasView canvas, ViewSize view, double pixelRatio);
// Another picture (a new crop, another photo): the same share of it stays in the middle.
CanvasView withPicture(CanvasView canvas, PixelSize picture);

// "Fit" or "66%", of device pixels.
std::string zoomText(const CanvasView& canvas);

} // namespace kelvaro
