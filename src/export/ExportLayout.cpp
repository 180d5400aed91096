#include "export/ExportLayout.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

PixelSize sizeOf(const Image& image) {
    return {image.extent().width, image.extent().height};
}

int margin(int longerSide, double fraction) {
    return int(std::lround(fraction * longerSide));
}

// The longest side that fills `longEdge` with its border. The margin is rounded for itself, so that
// the nearest whole number may be one pixel too many.
int longerSideWithin(int longEdge, double fraction) {
    int side = int(std::ceil(longEdge / (1 + 2 * fraction)));
    while (side > 1 && side + 2 * margin(side, fraction) > longEdge)
        --side;
    return side;
}

} // namespace

PixelSize resizedTo(PixelSize photo, const ExportSettings& settings) {
    if (!settings.resize) return photo;
    const int longer = std::max(photo.width, photo.height);
    const int target = longerSideWithin(settings.clampedLongEdge(), settings.borderFraction());
    if (target >= longer) return photo;
    const double scale = double(target) / longer;
    const auto scaled = [scale](int side) { return std::max(1, int(std::lround(side * scale))); };
    return {scaled(photo.width), scaled(photo.height)};
}

Image resized(const Image& photo, const ExportSettings& settings) {
    const PixelSize size = resizedTo(sizeOf(photo), settings);
    return size == sizeOf(photo) ? photo : lanczosResized(photo, size);
}

int borderPx(PixelSize picture, const ExportSettings& settings) {
    return margin(std::max(picture.width, picture.height), settings.borderFraction());
}

Image bordered(const Image& picture, const ExportSettings& settings) {
    const PixelRect& extent = picture.extent();
    const int m = borderPx(sizeOf(picture), settings);
    if (settings.borderFraction() == 0) return picture;
    const Image canvas =
        cropped(constantColour({1, 1, 1, 1}), {0, 0, extent.width + 2 * m, extent.height + 2 * m});
    return compositedOver(translated(picture, m - extent.x, m - extent.y), canvas);
}

} // namespace kelvaro
