#include "render/ViewGeometry.h"

#include "develop/CropGeometry.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

constexpr double kSamePlace = 1.0 / 16; // pixels of drift that nobody sees

PixelSize scaledSize(PixelSize size, double scale) {
    return {std::max(1, int(std::lround(size.width * scale))),
            std::max(1, int(std::lround(size.height * scale)))};
}

double scaleOf(const ViewRequest& request, PixelSize picture) {
    if (!request.fit) return request.scale > 0 && std::isfinite(request.scale) ? request.scale : 1;
    return std::clamp(std::min(double(request.fit->width) / picture.width,
                               double(request.fit->height) / picture.height),
                      1e-4, 1.0);
}

int dividedUp(int value, int by) {
    return (value + by - 1) / by;
}

// From the developed picture to the view's: to photo pixels, turned about the photo's centre, the
// crop's corner to the origin, scaled.
AffineTransform viewTransform(const ViewGeometry& geometry, PixelSize developed, int coarseness) {
    const double fromX = double(geometry.photo.width) / developed.width,
                 fromY = double(geometry.photo.height) / developed.height;
    const double toX = double(geometry.pictureSize.width) / geometry.crop.width / coarseness,
                 toY = double(geometry.pictureSize.height) / geometry.crop.height / coarseness;
    const double c = std::cos(geometry.turnRadians), s = std::sin(geometry.turnRadians);
    const double centreX = geometry.photo.width / 2.0, centreY = geometry.photo.height / 2.0;
    const double moveX = centreX - c * centreX + s * centreY - geometry.crop.x;
    const double moveY = centreY - s * centreX - c * centreY - geometry.crop.y;
    return {toX * c * fromX, toY * s * fromX, -toX * s * fromY,
            toY * c * fromY, toX * moveX,     toY * moveY};
}

bool isPlainMove(const AffineTransform& t, PixelSize size) {
    const auto whole = [](double v) { return std::abs(v - std::round(v)) < kSamePlace; };
    return t.b == 0 && t.c == 0 && std::abs(t.a - 1) * size.width < kSamePlace &&
           std::abs(t.d - 1) * size.height < kSamePlace && whole(t.tx) && whole(t.ty);
}

} // namespace

ViewGeometry ViewGeometry::of(const ViewRequest& request, PixelSize photo) {
    ViewGeometry view;
    view.photo = photo;
    view.crop = {0, 0, photo.width, photo.height};
    if (!request.whole) {
        const CropGeometry crop = CropGeometry::of(request.edit, photo);
        view.crop = crop.pixels(photo);
        view.turnRadians = crop.turnRadians;
    }
    view.scale = scaleOf(request, view.crop.size());
    view.pictureSize = scaledSize(view.crop.size(), view.scale);
    view.rect = {0, 0, view.pictureSize.width, view.pictureSize.height};
    if (request.rect) view.rect = intersection(view.rect, *request.rect);
    return view;
}

Image shapedForView(const Image& developed, const ViewGeometry& geometry, int coarseness) {
    const PixelRect result{0, 0, dividedUp(geometry.pictureSize.width, coarseness),
                           dividedUp(geometry.pictureSize.height, coarseness)};
    const PixelSize size = developed.extent().size();
    const AffineTransform map = viewTransform(geometry, size, coarseness);
    // The same filter for coarse views: it runs as vectors.
    if (!isPlainMove(map, size)) return affine(developed, map, result, Sampling::catmullRom);
    const int x = -int(std::lround(map.tx)), y = -int(std::lround(map.ty));
    const PixelRect part{x, y, result.width, result.height};
    if (!developed.extent().contains(part))
        return translated(cropped(clampedToExtent(developed), part), -x, -y);
    return translated(cropped(developed, part), -x, -y);
}

PixelRect shownPart(const ViewGeometry& geometry, const PixelRect& photoPart, int marginPx) {
    if (photoPart.isEmpty()) return {};
    const AffineTransform map = viewTransform(geometry, geometry.photo, 1);
    double left = 1e9, bottom = 1e9, right = -1e9, top = -1e9;
    for (const int x : {photoPart.x, photoPart.right()})
        for (const int y : {photoPart.y, photoPart.top()}) {
            const double viewX = map.a * x + map.c * y + map.tx;
            const double viewY = map.b * x + map.d * y + map.ty;
            left = std::min(left, viewX), right = std::max(right, viewX);
            bottom = std::min(bottom, viewY), top = std::max(top, viewY);
        }
    const int x = int(std::floor(left)), y = int(std::floor(bottom));
    const PixelRect part{x, y, int(std::ceil(right)) - x, int(std::ceil(top)) - y};
    return intersection(outset(part, marginPx), geometry.rect);
}

CoarseRect coarseRect(const ViewGeometry& geometry, int coarseness) {
    const PixelRect& rect = geometry.rect;
    const int x = rect.x / coarseness, y = rect.y / coarseness;
    const PixelRect pixels{x, y, dividedUp(rect.right(), coarseness) - x,
                           dividedUp(rect.top(), coarseness) - y};
    return {
        pixels,
        {x * coarseness, y * coarseness, pixels.width * coarseness, pixels.height * coarseness}};
}

} // namespace kelvaro
