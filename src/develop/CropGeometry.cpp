#include "develop/CropGeometry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvaro {

namespace {

constexpr double kMostCut = 0.98, kLeastKept = 0.02;

int roundedEdge(double edge) {
    return int(std::lround(edge));
}

// Both edges rounded; one pixel is kept even where they fall together at the far end.
void roundSpan(double from, double length, int side, int& start, int& count) {
    start = std::clamp(roundedEdge(from), 0, std::max(side - 1, 0));
    count = std::clamp(roundedEdge(from + length) - start, 1, std::max(side - start, 1));
}

// Turns about the photo's centre, moves the crop's corner to the origin, then scales.
AffineTransform shapingTransform(const PixelRect& photo, const PixelRect& crop, double turn,
                                 double scale) {
    const double c = std::cos(turn), s = std::sin(turn);
    const double centreX = photo.x + photo.width / 2.0, centreY = photo.y + photo.height / 2.0;
    const double tx = centreX - c * centreX + s * centreY - (photo.x + crop.x);
    const double ty = centreY - s * centreX - c * centreY - (photo.y + crop.y);
    return {scale * c, scale * s, -scale * s, scale * c, scale * tx, scale * ty};
}

} // namespace

CropGeometry CropGeometry::of(const Adjustments& edit, PixelSize photo) {
    CropGeometry crop;
    crop.x = photo.width * std::min(edit.cropLeft, kMostCut);
    crop.width = photo.width * std::max(1 - edit.cropLeft - edit.cropRight, kLeastKept);
    crop.height = photo.height * std::max(1 - edit.cropTop - edit.cropBottom, kLeastKept);
    crop.y = photo.height * (1 - std::min(edit.cropTop, kMostCut)) - crop.height;
    crop.turnRadians = -edit.straighten * std::numbers::pi / 180;
    return crop;
}

PixelRect CropGeometry::pixels(PixelSize photo) const {
    PixelRect rect;
    roundSpan(x, width, photo.width, rect.x, rect.width);
    roundSpan(y, height, photo.height, rect.y, rect.height);
    return rect;
}

std::array<double, 4> CropGeometry::centredHalves(PixelSize photo) const {
    return {x + width / 2 - photo.width / 2.0, y + height / 2 - photo.height / 2.0, width / 2,
            height / 2};
}

Image straightenedAndCropped(const Image& developed, const Adjustments& edit) {
    return straightenedAndCropped(developed, edit, 1);
}

Image straightenedAndCropped(const Image& developed, const Adjustments& edit, double scale) {
    const PixelRect photo = developed.extent();
    const CropGeometry geometry = CropGeometry::of(edit, photo.size());
    const PixelRect crop = geometry.pixels(photo.size());
    if (geometry.turnRadians == 0 && scale == 1) {
        const int x = photo.x + crop.x, y = photo.y + crop.y;
        return translated(cropped(developed, {x, y, crop.width, crop.height}), -x, -y);
    }
    const PixelRect result{0, 0, std::max(1, roundedEdge(crop.width * scale)),
                           std::max(1, roundedEdge(crop.height * scale))};
    return affine(developed, shapingTransform(photo, crop, geometry.turnRadians, scale), result,
                  Sampling::catmullRom);
}

Image reducedToLongEdge(const Image& image, double longEdge) {
    const PixelSize size = image.extent().size();
    const double scale = longEdge / image.extent().longerSide();
    if (!(scale < 1) || !(longEdge >= 1)) return image;
    const auto scaled = [&](int side) { return std::max(1, roundedEdge(side * scale)); };
    return lanczosResized(image, {scaled(size.width), scaled(size.height)});
}

} // namespace kelvaro
