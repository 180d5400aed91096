#include "recipe/MaskCoding.h"

#include "recipe/MaskControls.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <concepts>

namespace kelvaro {
namespace {

using NonFinite = StoredFields::NonFinite;

// In the order of the enumerations.
constexpr std::array<std::string_view, 3> kindNames{"brush", "linear", "radial"};
constexpr std::array<std::string_view, 3> modeNames{"add", "subtract", "intersect"};

template<class Case>
Case decodeCase(const StoredFields& fields, std::string_view key, std::string_view expected,
                std::span<const std::string_view> names) {
    const std::string name = fields.text(key, "");
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) {
        fields.note(key, expected);
        return Case{};
    }
    return static_cast<Case>(found - names.begin());
}

template<class Case>
json::Value encodeCase(Case value, std::span<const std::string_view> names) {
    return {std::string(names[static_cast<std::size_t>(value)])};
}

// An identifier of any wrong form, or none, becomes a new one.
Uuid decodeIdentifier(const StoredFields& fields, RandomSource& random) {
    const auto stored = fields.identifier("id");
    return stored ? *stored : randomUuid(random);
}

MaskPoint decodePoint(const StoredFields& fields) {
    return {fields.number("x", 0, NonFinite::keep), fields.number("y", 0, NonFinite::keep)};
}

BrushStroke decodeStroke(const StoredFields& fields) {
    BrushStroke stroke;
    fields.eachObject(
        "points", [&](const StoredFields& point) { stroke.points.push_back(decodePoint(point)); });
    stroke.radius = fields.number("radius", stroke.radius, NonFinite::keep);
    stroke.feather = fields.number("feather", stroke.feather, NonFinite::keep);
    stroke.flow = fields.number("flow", stroke.flow, NonFinite::keep);
    stroke.erase = fields.boolean("erase", stroke.erase);
    return stroke;
}

MaskComponent decodeComponent(const StoredFields& fields, RandomSource& random) {
    MaskComponent component;
    component.id = decodeIdentifier(fields, random);
    component.kind = decodeCase<MaskComponent::Kind>(fields, "kind", "a kind of shape", kindNames);
    component.mode =
        decodeCase<MaskComponent::Mode>(fields, "mode", "a way to combine shapes", modeNames);
    component.invert = fields.boolean("invert", component.invert);
    fields.object("start", [&](const StoredFields& p) { component.start = decodePoint(p); });
    fields.object("end", [&](const StoredFields& p) { component.end = decodePoint(p); });
    component.angle = fields.number("angle", component.angle, NonFinite::keep);
    component.feather = fields.number("feather", component.feather, NonFinite::keep);
    fields.eachObject("strokes", [&](const StoredFields& stroke) {
        component.strokes.push_back(decodeStroke(stroke));
    });
    return sanitised(std::move(component));
}

// Values are moved: an initialiser list would copy the hundreds of thousands of points that a mask
// may have, once for each level. Quickest where the keys come in their order.
json::Value encodeObject(std::same_as<json::Member> auto... members) {
    std::vector<json::Member> list;
    list.reserve(sizeof...(members));
    (list.push_back(std::move(members)), ...);
    return {json::Object(std::move(list))};
}

json::Value encodePoint(const MaskPoint& point) {
    return encodeObject(json::Member{"x", json::number(point.x)},
                        json::Member{"y", json::number(point.y)});
}

template<class Items, class Encode>
json::Value encodeEach(const Items& items, Encode encode) {
    json::Array list;
    list.reserve(items.size());
    for (const auto& item : items)
        list.push_back(encode(item));
    return {std::move(list)};
}

json::Value encodeStroke(const BrushStroke& stroke) {
    return encodeObject(json::Member{"erase", {stroke.erase}},
                        json::Member{"feather", json::number(stroke.feather)},
                        json::Member{"flow", json::number(stroke.flow)},
                        json::Member{"points", encodeEach(stroke.points, encodePoint)},
                        json::Member{"radius", json::number(stroke.radius)});
}

json::Value encodeComponent(const MaskComponent& given) {
    const MaskComponent component = sanitised(given);
    return encodeObject(json::Member{"angle", json::number(component.angle)},
                        json::Member{"end", encodePoint(component.end)},
                        json::Member{"feather", json::number(component.feather)},
                        json::Member{"id", {toText(component.id)}},
                        json::Member{"invert", {component.invert}},
                        json::Member{"kind", encodeCase(component.kind, kindNames)},
                        json::Member{"mode", encodeCase(component.mode, modeNames)},
                        json::Member{"start", encodePoint(component.start)},
                        json::Member{"strokes", encodeEach(component.strokes, encodeStroke)});
}

} // namespace

LocalMask decodeMask(const StoredFields& fields, RandomSource& random) {
    LocalMask mask;
    mask.id = decodeIdentifier(fields, random);
    mask.name = fields.text("name", mask.name);
    mask.enabled = fields.boolean("enabled", mask.enabled);
    mask.invert = fields.boolean("invert", mask.invert);
    mask.amount = fields.number("amount", mask.amount);
    for (const MaskControl& control : maskControlCatalogue()) {
        mask.*control.field = fields.number(control.storedKey(), 0);
    }
    fields.eachObject("components", [&](const StoredFields& component) {
        mask.components.push_back(decodeComponent(component, random));
    });
    return mask;
}

json::Object encodeMask(const LocalMask& mask) {
    json::Object object({{"id", {toText(mask.id)}},
                         {"name", {mask.name}},
                         {"enabled", {mask.enabled}},
                         {"invert", {mask.invert}},
                         {"amount", json::number(mask.amount)}});
    object.set("components", encodeEach(mask.components, encodeComponent));
    for (const MaskControl& control : maskControlCatalogue()) {
        object.set(control.storedKey(), json::number(mask.*control.field));
    }
    return object;
}

bool isFinite(const LocalMask& mask) {
    const auto controls = maskControlCatalogue();
    return std::isfinite(mask.amount) &&
           std::all_of(controls.begin(), controls.end(), [&](const MaskControl& control) {
               return std::isfinite(mask.*control.field);
           });
}

} // namespace kelvaro
