#include "editor/PhotoPlacement.h"

#include "develop/CropGeometry.h"

#include <cmath>

namespace kelvaro {

PhotoPlacement::PhotoPlacement(const CanvasView& canvas, PixelSize photo, double turn, Point corner)
    : canvas_(canvas),
      photo_(photo),
      turn_(turn),
      longer_(std::max({photo.width, photo.height, 1})),
      corner_(corner),
      cos_(std::cos(turn)),
      sin_(std::sin(turn)) {}

PhotoPlacement PhotoPlacement::ofPicture(const CanvasView& canvas, const Adjustments& edit,
                                         PixelSize photo) {
    const CropGeometry crop = CropGeometry::of(edit, photo);
    const PixelRect pixels = crop.pixels(photo);
    return {canvas, photo, crop.turnRadians, {double(pixels.x), double(pixels.y)}};
}

PhotoPlacement PhotoPlacement::ofWhole(const CanvasView& canvas, const Adjustments& edit,
                                       PixelSize photo) {
    return {canvas, photo, CropGeometry::of(edit, photo).turnRadians, {}};
}

Point PhotoPlacement::toView(Point p) const {
    const double dx = p.x - photo_.width / 2.0, dy = p.y - photo_.height / 2.0;
    return canvas_.toView({cos_ * dx - sin_ * dy + photo_.width / 2.0 - corner_.x,
                           sin_ * dx + cos_ * dy + photo_.height / 2.0 - corner_.y});
}

Point PhotoPlacement::toPhoto(Point viewPoint) const {
    const Point p = canvas_.toPicture(viewPoint);
    const double dx = p.x + corner_.x - photo_.width / 2.0;
    const double dy = p.y + corner_.y - photo_.height / 2.0;
    return {cos_ * dx + sin_ * dy + photo_.width / 2.0,
            cos_ * dy - sin_ * dx + photo_.height / 2.0};
}

Point PhotoPlacement::toView(MaskPoint point) const {
    return toView(Point{point.x * longer_, point.y * longer_});
}

MaskPoint PhotoPlacement::toMask(Point viewPoint) const {
    const Point p = toPhoto(viewPoint);
    return {p.x / longer_, p.y / longer_};
}

} // namespace kelvaro
