#include "recipe/LocalMask.h"

#include "recipe/Hashing.h"
#include "recipe/MaskControls.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {
namespace {

constexpr double lowestCoordinate = -4, highestCoordinate = 5;
constexpr double smallestRadius = 0.001;

double limited(double value, double lower, double upper, double otherwise) {
    if (!std::isfinite(value)) return otherwise;
    // The bound itself also where the value is −0 and the bound 0.
    return value <= lower ? lower : std::min(value, upper);
}

MaskPoint limited(MaskPoint point) {
    return {limited(point.x, lowestCoordinate, highestCoordinate, 0),
            limited(point.y, lowestCoordinate, highestCoordinate, 0)};
}

BrushStroke sanitised(BrushStroke stroke) {
    const BrushStroke defaults;
    for (MaskPoint& point : stroke.points)
        point = limited(point);
    stroke.radius = limited(stroke.radius, 0, 1, defaults.radius);
    stroke.feather = limited(stroke.feather, 0, 100, defaults.feather);
    stroke.flow = limited(stroke.flow, 0, 100, defaults.flow);
    return stroke;
}

std::size_t fold(std::size_t seed, const Uuid& id) {
    for (const std::uint8_t byte : id.bytes)
        seed = foldHash(seed, byte);
    return seed;
}

std::size_t fold(std::size_t seed, const MaskPoint& point) {
    return foldValue(foldValue(seed, point.x), point.y);
}

std::size_t fold(std::size_t seed, const BrushStroke& stroke) {
    for (const MaskPoint& point : stroke.points)
        seed = fold(seed, point);
    for (const double value : {stroke.radius, stroke.feather, stroke.flow}) {
        seed = foldValue(seed, value);
    }
    return foldValue(seed, stroke.erase);
}

std::size_t fold(std::size_t seed, const MaskComponent& component) {
    seed = fold(seed, component.id);
    seed = foldHash(seed, static_cast<std::size_t>(component.kind));
    seed = foldHash(seed, static_cast<std::size_t>(component.mode));
    seed = foldValue(seed, component.invert);
    seed = fold(fold(seed, component.start), component.end);
    seed = foldValue(foldValue(seed, component.angle), component.feather);
    for (const BrushStroke& stroke : component.strokes)
        seed = fold(seed, stroke);
    return seed;
}

} // namespace

LocalMask newMask(RandomSource& random) {
    LocalMask mask;
    mask.id = randomUuid(random);
    return mask;
}

MaskComponent newComponent(MaskComponent::Kind kind, MaskComponent::Mode mode,
                           RandomSource& random) {
    MaskComponent component;
    component.id = randomUuid(random);
    component.kind = kind;
    component.mode = mode;
    return sanitised(std::move(component));
}

MaskComponent sanitised(MaskComponent component) {
    component.start = limited(component.start);
    component.end = limited(component.end);
    if (component.kind == MaskComponent::Kind::radial) {
        component.end.x = std::max(std::abs(component.end.x), smallestRadius);
        component.end.y = std::max(std::abs(component.end.y), smallestRadius);
    }
    component.angle = std::isfinite(component.angle) ? std::fmod(component.angle, 360) : 0;
    component.feather = limited(component.feather, 0, 100, 50);
    std::erase_if(component.strokes, [](const BrushStroke& s) { return s.points.empty(); });
    for (BrushStroke& stroke : component.strokes)
        stroke = sanitised(std::move(stroke));
    return component;
}

LocalMask sanitised(LocalMask mask) {
    for (MaskComponent& component : mask.components)
        component = sanitised(std::move(component));
    return mask;
}

std::size_t hashOf(const LocalMask& mask) {
    std::size_t seed = foldValue(fold(0, mask.id), mask.name);
    seed = foldValue(foldValue(seed, mask.enabled), mask.invert);
    seed = foldValue(seed, mask.amount);
    for (const MaskControl& control : maskControlCatalogue()) {
        seed = foldValue(seed, mask.*control.field);
    }
    for (const MaskComponent& component : mask.components)
        seed = fold(seed, component);
    return seed;
}

} // namespace kelvaro
