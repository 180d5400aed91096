#include "editor/MaskHandles.h"

#include <cmath>
#include <numbers>

namespace kelvaro {
namespace {

constexpr double pi = std::numbers::pi;
constexpr double leastDrawnPoints = 4;
constexpr double leastRadius = 0.005;
constexpr double turnStepDegrees = 15;

double distance(Point a, Point b) {
    return std::hypot(a.x - b.x, a.y - b.y);
}

MaskPoint difference(MaskPoint a, MaskPoint b) {
    return {a.x - b.x, a.y - b.y};
}

MaskPoint moved(MaskPoint p, MaskPoint by) {
    return {p.x + by.x, p.y + by.y};
}

MaskPoint turned(MaskPoint p, double radians) {
    const double c = std::cos(radians), s = std::sin(radians);
    return {c * p.x - s * p.y, s * p.x + c * p.y};
}

double angleOf(const MaskComponent& shape) {
    return shape.angle * pi / 180;
}

// The point of an ellipse at (x, y) of its own axes, in radii.
MaskPoint onEllipse(const MaskComponent& shape, double x, double y) {
    return moved(shape.start, turned({x * shape.end.x, y * shape.end.y}, angleOf(shape)));
}

// And back: where a point lies in the ellipse's axes, in mask units.
MaskPoint inAxes(const MaskComponent& shape, MaskPoint p) {
    return turned(difference(p, shape.start), -angleOf(shape));
}

double radiiFrom(const MaskComponent& shape, MaskPoint p) {
    const MaskPoint q = inAxes(shape, p);
    return std::hypot(q.x / shape.end.x, q.y / shape.end.y);
}

MaskPoint middle(const MaskComponent& shape) {
    return {(shape.start.x + shape.end.x) / 2, (shape.start.y + shape.end.y) / 2};
}

double distanceToSegment(Point p, Point a, Point b) {
    const double dx = b.x - a.x, dy = b.y - a.y, square = dx * dx + dy * dy;
    const double t =
        square > 0 ? std::clamp(((p.x - a.x) * dx + (p.y - a.y) * dy) / square, 0.0, 1.0) : 0;
    return distance(p, {a.x + t * dx, a.y + t * dy});
}

std::optional<MaskHandle> beyondHandles(Point p, const MaskComponent& shape,
                                        const PhotoPlacement& place) {
    if (shape.kind == MaskComponent::Kind::linear) {
        const double off = distanceToSegment(p, place.toView(shape.start), place.toView(shape.end));
        if (off <= handleReachPoints) return MaskHandle::move;
        return std::nullopt;
    }
    const double radii = radiiFrom(shape, place.toMask(p));
    if (radii <= 1) return MaskHandle::move;
    const double least = std::min(shape.end.x, shape.end.y) * place.pointsPerMaskUnit();
    if ((radii - 1) * least <= rotateReachPoints) return MaskHandle::rotate;
    return std::nullopt;
}

double turnBetween(MaskPoint centre, MaskPoint from, MaskPoint to) {
    return std::remainder(std::atan2(to.y - centre.y, to.x - centre.x) -
                              std::atan2(from.y - centre.y, from.x - centre.x),
                          2 * pi);
}

MaskComponent draggedLine(MaskComponent shape, MaskHandle handle, MaskPoint from, MaskPoint to,
                          bool even) {
    const MaskPoint by = difference(to, from);
    switch (handle) {
    case MaskHandle::start:
        shape.start = moved(shape.start, by);
        break;
    case MaskHandle::end:
        shape.end = moved(shape.end, by);
        break;
    case MaskHandle::rotate: {
        const MaskPoint centre = middle(shape);
        double turn = turnBetween(centre, from, to);
        if (even) turn = std::round(turn * 12 / pi) * pi / 12;
        shape.start = moved(centre, turned(difference(shape.start, centre), turn));
        shape.end = moved(centre, turned(difference(shape.end, centre), turn));
        break;
    }
    default:
        shape.start = moved(shape.start, by);
        shape.end = moved(shape.end, by);
    }
    return shape;
}

void resizeEllipse(MaskComponent& shape, bool horizontal, double by, bool even) {
    double& radius = horizontal ? shape.end.x : shape.end.y;
    const double before = radius;
    radius = std::max(radius + by, leastRadius);
    double& other = horizontal ? shape.end.y : shape.end.x;
    if (even) other = std::max(other * radius / before, leastRadius);
}

MaskComponent draggedEllipse(MaskComponent shape, MaskHandle handle, MaskPoint from, MaskPoint to,
                             bool even) {
    const MaskPoint before = inAxes(shape, from), after = inAxes(shape, to);
    switch (handle) {
    case MaskHandle::right:
    case MaskHandle::left:
        resizeEllipse(shape, true,
                      handle == MaskHandle::right ? after.x - before.x : before.x - after.x, even);
        break;
    case MaskHandle::top:
    case MaskHandle::bottom:
        resizeEllipse(shape, false,
                      handle == MaskHandle::top ? after.y - before.y : before.y - after.y, even);
        break;
    case MaskHandle::feather:
        shape.feather =
            100 * (1 - std::clamp(innerShare(shape) + radiiFrom(shape, to) - radiiFrom(shape, from),
                                  0.0, 1.0));
        break;
    case MaskHandle::rotate:
        shape.angle += turnBetween(shape.start, from, to) * 180 / pi;
        if (even) shape.angle = std::round(shape.angle / turnStepDegrees) * turnStepDegrees;
        break;
    default:
        shape.start = moved(shape.start, difference(to, from));
    }
    return shape;
}

} // namespace

double innerShare(const MaskComponent& shape) {
    return 1 - std::clamp(shape.feather / 100, 0.0, 1.0);
}

std::vector<MaskHandlePoint> maskHandles(const MaskComponent& shape, const PhotoPlacement& place) {
    const auto at = [&](MaskHandle handle, MaskPoint p) {
        return MaskHandlePoint{handle, place.toView(p)};
    };
    switch (shape.kind) {
    case MaskComponent::Kind::brush:
        break;
    case MaskComponent::Kind::linear: {
        // The turning handle stands beside the middle, square to the line.
        const MaskPoint centre = middle(shape);
        const Point a = place.toView(shape.start), b = place.toView(shape.end);
        const Point m = place.toView(centre);
        const double length = std::max(distance(a, b), 1e-9);
        const Point beside{m.x - (b.y - a.y) / length * 2 * rotateReachPoints,
                           m.y + (b.x - a.x) / length * 2 * rotateReachPoints};
        return {{MaskHandle::rotate, beside},
                {MaskHandle::move, m},
                at(MaskHandle::end, shape.end),
                at(MaskHandle::start, shape.start)};
    }
    case MaskComponent::Kind::radial: {
        const double inner = innerShare(shape) * std::numbers::sqrt2 / 2;
        return {at(MaskHandle::move, shape.start),
                at(MaskHandle::feather, onEllipse(shape, inner, inner)),
                at(MaskHandle::bottom, onEllipse(shape, 0, -1)),
                at(MaskHandle::top, onEllipse(shape, 0, 1)),
                at(MaskHandle::left, onEllipse(shape, -1, 0)),
                at(MaskHandle::right, onEllipse(shape, 1, 0))};
    }
    }
    return {};
}

std::optional<MaskHandle> maskHandleAt(Point viewPoint, const MaskComponent& shape,
                                       const PhotoPlacement& place) {
    if (shape.kind == MaskComponent::Kind::brush) return std::nullopt;
    std::optional<MaskHandle> nearest;
    double reach = handleReachPoints;
    // What is drawn later lies on top and wins a tie.
    for (const MaskHandlePoint& handle : maskHandles(shape, place)) {
        const double off = distance(viewPoint, handle.at);
        if (off > reach) continue;
        reach = off;
        nearest = handle.handle;
    }
    return nearest ? nearest : beyondHandles(viewPoint, shape, place);
}

MaskComponent draggedShape(const MaskComponent& start, MaskHandle handle, Point from, Point to,
                           const PhotoPlacement& place, bool even) {
    const MaskPoint before = place.toMask(from), after = place.toMask(to);
    switch (start.kind) {
    case MaskComponent::Kind::brush:
        return start;
    case MaskComponent::Kind::linear:
        return sanitised(draggedLine(start, handle, before, after, even));
    case MaskComponent::Kind::radial:
        return sanitised(draggedEllipse(start, handle, before, after, even));
    }
    return start;
}

std::optional<MaskComponent> drawnShape(MaskComponent shape, Point from, Point to,
                                        const PhotoPlacement& place) {
    if (distance(from, to) < leastDrawnPoints) return std::nullopt;
    shape.start = place.toMask(from);
    shape.end = place.toMask(to);
    if (shape.kind == MaskComponent::Kind::radial) {
        // As it is seen: upright on the screen, however the photo is turned under it.
        shape.angle = -place.turnRadians() * 180 / pi;
        const MaskPoint radii = inAxes(shape, shape.end);
        shape.end = {std::max(std::abs(radii.x), leastRadius),
                     std::max(std::abs(radii.y), leastRadius)};
    }
    return sanitised(std::move(shape));
}

std::vector<Point> ellipseOutline(const MaskComponent& shape, double share,
                                  const PhotoPlacement& place, int count) {
    std::vector<Point> outline;
    for (int i = 0; i < count; ++i) {
        const double t = 2 * pi * i / count;
        outline.push_back(place.toView(onEllipse(shape, share * std::cos(t), share * std::sin(t))));
    }
    return outline;
}

} // namespace kelvaro
