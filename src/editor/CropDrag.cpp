#include "editor/CropDrag.h"

#include "base/Require.h"

#include <cmath>
#include <numbers>

namespace kelvaro {
namespace {

Box moved(const Box& start, Point travel, PixelSize photo) {
    // Not std::clamp: a crop that sticks out by rounding must not make the bounds cross.
    const auto along = [](double from, double by, double room) {
        return std::max(std::min(from + by, room), 0.0);
    };
    return {along(start.x, travel.x, photo.width - start.width),
            along(start.y, travel.y, photo.height - start.height), start.width, start.height};
}

Box resized(CropHandle handle, const Box& start, Point travel, PixelSize photo) {
    const double least = leastCropShare * std::max(photo.width, photo.height);
    double minX = start.minX(), minY = start.minY(), maxX = start.maxX(), maxY = start.maxY();
    if (carriesLeft(handle)) minX = std::min(std::max(minX + travel.x, 0.0), maxX - least);
    if (carriesRight(handle)) {
        maxX = std::max(std::min(maxX + travel.x, double(photo.width)), minX + least);
    }
    if (carriesTop(handle)) {
        maxY = std::max(std::min(maxY + travel.y, double(photo.height)), minY + least);
    }
    if (carriesBottom(handle)) minY = std::min(std::max(minY + travel.y, 0.0), maxY - least);
    return Box::between(minX, minY, maxX, maxY);
}

// The edges opposite the dragged corner stay where they are.
Box cornerOfRatio(CropHandle handle, const Box& box, double ratio) {
    const bool wide = box.width / box.height > ratio;
    const double width = wide ? box.height * ratio : box.width;
    const double height = wide ? box.height : box.width / ratio;
    return {carriesLeft(handle) ? box.maxX() - width : box.x,
            carriesBottom(handle) ? box.maxY() - height : box.y, width, height};
}

Box ofRatio(CropHandle handle, const Box& start, const Box& box, double ratio) {
    if (isCorner(handle)) return cornerOfRatio(handle, box, ratio);
    const Point middle = start.centre();
    if (handle == CropHandle::top || handle == CropHandle::bottom) {
        const double width = box.height * ratio;
        return {middle.x - width / 2, box.y, width, box.height};
    }
    const double height = box.width / ratio;
    return {box.x, middle.y - height / 2, box.width, height};
}

} // namespace

Box requestedCrop(CropHandle handle, const Box& start, Point travel, std::optional<double> ratio,
                  PixelSize photo) {
    KELVARO_REQUIRE(handle != CropHandle::rotate);
    if (handle == CropHandle::move) return moved(start, travel, photo);
    const Box box = resized(handle, start, travel, photo);
    return ratio ? ofRatio(handle, start, box, *ratio) : box;
}

Box draggedCrop(CropHandle handle, const Box& start, Point travel, std::optional<double> ratio,
                PixelSize photo, double turn) {
    return fittedTowards(start, requestedCrop(handle, start, travel, ratio, photo), photo, turn);
}

double draggedStraighten(double startDegrees, double startBearing, double bearing) {
    constexpr double pi = std::numbers::pi;
    double turned = bearing - startBearing;
    if (turned > pi) turned -= 2 * pi;
    if (turned < -pi) turned += 2 * pi;
    return std::clamp(startDegrees - turned * 180 / pi, -mostStraightenDegrees,
                      mostStraightenDegrees);
}

} // namespace kelvaro
