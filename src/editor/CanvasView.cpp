#include "editor/CanvasView.h"

#include <cmath>
#include <fmt/format.h>

namespace kelvaro {
namespace {

// Where the view's middle may lie along one axis.
double clampedCentre(double wanted, double viewPoints, double pictureLength,
                     double pointsPerPixel) {
    const double half = viewPoints / pointsPerPixel / 2;
    if (!std::isfinite(wanted) || 2 * half >= pictureLength) return pictureLength / 2;
    return std::clamp(wanted, half, pictureLength - half);
}

CanvasView clamped(CanvasView canvas) {
    if (!canvas.isDrawable()) return canvas;
    const double points = canvas.pointsPerPixel();
    canvas.centre.x =
        clampedCentre(canvas.centre.x, canvas.view.width, canvas.picture.width, points);
    canvas.centre.y =
        clampedCentre(canvas.centre.y, canvas.view.height, canvas.picture.height, points);
    return canvas;
}

// After a change of scale: puts `picturePoint` back under `viewPoint`.
CanvasView withPointAt(CanvasView canvas, Point picturePoint, Point viewPoint) {
    const double points = canvas.pointsPerPixel();
    canvas.centre.x = picturePoint.x - (viewPoint.x - canvas.view.width / 2) / points;
    canvas.centre.y = picturePoint.y + (viewPoint.y - canvas.view.height / 2) / points;
    return clamped(canvas);
}

double fitScale(const CanvasView& canvas) {
    const double across = canvas.view.width - 2 * CanvasView::fitMarginPoints;
    const double up = canvas.view.height - 2 * CanvasView::fitMarginPoints;
    // A view smaller than its margins still shows something.
    const double room = std::min(std::max(across, 1.0) / canvas.picture.width,
                                 std::max(up, 1.0) / canvas.picture.height);
    return std::min(room * canvas.pixelRatio, 1.0);
}

} // namespace

bool CanvasView::isDrawable() const {
    return view.width > 0 && view.height > 0 && picture.width > 0 && picture.height > 0 &&
           pixelRatio > 0;
}

double CanvasView::scale() const {
    if (!isDrawable()) return 1;
    switch (zoom) {
    case Zoom::fit:
        return fitScale(*this);
    case Zoom::actual:
        return 1;
    case Zoom::twice:
        return 2;
    case Zoom::free:
        break;
    }
    return freeScale > 0 ? std::clamp(freeScale, leastScale, mostScale) : 1;
}

Box CanvasView::pictureInView() const {
    const double points = pointsPerPixel();
    const Point middle =
        zoom == Zoom::fit ? Point{picture.width / 2.0, picture.height / 2.0} : centre;
    const auto onDevice = [&](double p) { return std::round(p * pixelRatio) / pixelRatio; };
    return {onDevice(view.width / 2 - middle.x * points),
            onDevice(view.height / 2 - (picture.height - middle.y) * points),
            picture.width * points, picture.height * points};
}

Point CanvasView::toView(Point p) const {
    const Box shown = pictureInView();
    const double points = pointsPerPixel();
    return {shown.x + p.x * points, shown.y + (picture.height - p.y) * points};
}

Point CanvasView::toPicture(Point p) const {
    const Box shown = pictureInView();
    const double points = pointsPerPixel();
    return {(p.x - shown.x) / points, picture.height - (p.y - shown.y) / points};
}

PixelSize CanvasView::scaledPicture() const {
    const auto scaled = [s = scale()](int side) { return std::max(1, int(std::lround(side * s))); };
    return {scaled(picture.width), scaled(picture.height)};
}

PixelRect CanvasView::visiblePixels() const {
    if (!isDrawable()) return {};
    const Box shown = pictureInView();
    const PixelSize whole = scaledPicture();
    const int left = int(std::floor(-shown.x * pixelRatio));
    const int top = int(std::floor(-shown.y * pixelRatio)); // rows from the picture's top
    const int width = int(std::ceil(view.width * pixelRatio)) + 1;
    const int height = int(std::ceil(view.height * pixelRatio)) + 1;
    return intersection({left, whole.height - top - height, width, height},
                        {0, 0, whole.width, whole.height});
}

CanvasView zoomedTo(CanvasView canvas, CanvasView::Zoom zoom, Point about) {
    if (!canvas.isDrawable()) return canvas;
    const Point held = canvas.toPicture(about);
    if (zoom == CanvasView::Zoom::free) canvas.freeScale = canvas.scale();
    canvas.zoom = zoom;
    return withPointAt(canvas, held, about);
}

CanvasView zoomedBy(CanvasView canvas, double factor, Point about) {
    if (!canvas.isDrawable() || !(factor > 0) || !std::isfinite(factor)) return canvas;
    const Point held = canvas.toPicture(about);
    // Never smaller than fitting, where the picture is larger than the view.
    const double least = std::min(std::max(fitScale(canvas), CanvasView::leastScale), 1.0);
    const double wanted = canvas.scale() * factor;
    if (wanted <= least) {
        canvas.zoom = CanvasView::Zoom::fit;
        return clamped(canvas);
    }
    canvas.freeScale = std::min(wanted, CanvasView::mostScale);
    canvas.zoom = CanvasView::Zoom::free;
    return withPointAt(canvas, held, about);
}

double wheelZoomFactor(double wheelUnits) {
    return std::exp2(std::clamp(wheelUnits, -1200.0, 1200.0) / 480);
}

CanvasView zoomToggled(const CanvasView& canvas, Point about) {
    const bool fitted = canvas.zoom == CanvasView::Zoom::fit;
    return zoomedTo(canvas, fitted ? CanvasView::Zoom::actual : CanvasView::Zoom::fit, about);
}

CanvasView panned(CanvasView canvas, Point by) {
    if (!canvas.isDrawable() || canvas.zoom == CanvasView::Zoom::fit) return canvas;
    const double points = canvas.pointsPerPixel();
    canvas.centre.x -= by.x / points;
    canvas.centre.y += by.y / points;
    return clamped(canvas);
}

CanvasView resized(CanvasView canvas, ViewSize view, double pixelRatio) {
    canvas.view = view;
    canvas.pixelRatio = pixelRatio > 0 ? pixelRatio : 1;
    return clamped(canvas);
}

CanvasView withPicture(CanvasView canvas, PixelSize picture) {
    const auto share = [](double at, int side) { return side > 0 ? at / side : 0.5; };
    const Point middle{share(canvas.centre.x, canvas.picture.width),
                       share(canvas.centre.y, canvas.picture.height)};
    canvas.picture = picture;
    canvas.centre = {middle.x * picture.width, middle.y * picture.height};
    return clamped(canvas);
}

std::string zoomText(const CanvasView& canvas) {
    if (canvas.zoom == CanvasView::Zoom::fit) return "Fit";
    return fmt::format("{}%", std::lround(canvas.scale() * 100));
}

} // namespace kelvaro
