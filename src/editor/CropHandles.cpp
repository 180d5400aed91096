#include "editor/CropHandles.h"

#include <cmath>
#include <utility>

namespace kelvaro {

std::optional<CropHandle> cropHandleAt(Point p, const std::optional<Box>& drawn) {
    if (!drawn || !(drawn->width > 0) || !(drawn->height > 0)) return std::nullopt;
    const Box& r = *drawn;
    const std::pair<Point, CropHandle> corners[] = {
        {{r.minX(), r.maxY()}, CropHandle::topLeft},
        {{r.maxX(), r.maxY()}, CropHandle::topRight},
        {{r.minX(), r.minY()}, CropHandle::bottomLeft},
        {{r.maxX(), r.minY()}, CropHandle::bottomRight},
    };
    for (const auto& [corner, handle] : corners) {
        if (std::hypot(p.x - corner.x, p.y - corner.y) <= cornerReachPoints) return handle;
    }
    if (r.grownBy(edgeReachPoints).contains(p)) {
        if (std::abs(p.x - r.minX()) <= edgeReachPoints) return CropHandle::left;
        if (std::abs(p.x - r.maxX()) <= edgeReachPoints) return CropHandle::right;
        if (std::abs(p.y - r.maxY()) <= edgeReachPoints) return CropHandle::top;
        if (std::abs(p.y - r.minY()) <= edgeReachPoints) return CropHandle::bottom;
    }
    return r.contains(p) ? CropHandle::move : CropHandle::rotate;
}

bool carriesLeft(CropHandle h) {
    return h == CropHandle::left || h == CropHandle::topLeft || h == CropHandle::bottomLeft;
}
bool carriesRight(CropHandle h) {
    return h == CropHandle::right || h == CropHandle::topRight || h == CropHandle::bottomRight;
}
bool carriesTop(CropHandle h) {
    return h == CropHandle::top || h == CropHandle::topLeft || h == CropHandle::topRight;
}
bool carriesBottom(CropHandle h) {
    return h == CropHandle::bottom || h == CropHandle::bottomLeft || h == CropHandle::bottomRight;
}
bool isCorner(CropHandle h) {
    return (carriesLeft(h) || carriesRight(h)) && (carriesTop(h) || carriesBottom(h));
}

} // namespace kelvaro
