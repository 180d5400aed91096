#include "editor/MaskList.h"

#include "recipe/MaskControls.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>

namespace kelvaro {
namespace {

constexpr double defaultAmount = 100;

std::string_view kindName(MaskComponent::Kind kind) {
    switch (kind) {
    case MaskComponent::Kind::brush:
        return "Brush";
    case MaskComponent::Kind::linear:
        return "Linear";
    case MaskComponent::Kind::radial:
        return "Radial";
    }
    return "Mask";
}

// `name`, or with the first number that makes it differ from all others.
std::string uniqueName(const Adjustments& edit, const std::string& name) {
    const auto isTaken = [&](const std::string& candidate) {
        return std::ranges::any_of(edit.masks,
                                   [&](const LocalMask& m) { return m.name == candidate; });
    };
    if (!isTaken(name)) return name;
    int number = 2;
    while (isTaken(fmt::format("{} {}", name, number)))
        ++number;
    return fmt::format("{} {}", name, number);
}

// A gradient falls over the middle third from the top; an ellipse covers the middle half.
MaskComponent newShape(MaskComponent::Kind kind, MaskComponent::Mode mode, PixelSize photo,
                       RandomSource& random) {
    MaskComponent shape = newComponent(kind, mode, random);
    const double longer = std::max({photo.width, photo.height, 1});
    const double across = photo.width / longer, up = photo.height / longer;
    if (kind == MaskComponent::Kind::linear) {
        shape.start = {across / 2, up * 2 / 3};
        shape.end = {across / 2, up / 3};
    } else if (kind == MaskComponent::Kind::radial) {
        shape.start = {across / 2, up / 2};
        shape.end = {across / 4, up / 4};
    }
    return sanitised(std::move(shape));
}

std::vector<LocalMask>::iterator maskAt(Adjustments& edit, const Uuid& mask) {
    return std::ranges::find(edit.masks, mask, &LocalMask::id);
}

std::string tidyName(std::string name) {
    std::ranges::replace_if(
        name, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 127; }, ' ');
    const std::size_t first = name.find_first_not_of(' ');
    if (first == std::string::npos) return {};
    name = name.substr(first, name.find_last_not_of(' ') - first + 1);
    if (name.size() <= mostMaskNameBytes) return name;
    std::size_t end = mostMaskNameBytes;
    while (end > 0 && (static_cast<unsigned char>(name[end]) & 0xC0) == 0x80)
        --end;
    return name.substr(0, end);
}

} // namespace

LocalMask* findMask(Adjustments& edit, const Uuid& mask) {
    const auto found = maskAt(edit, mask);
    return found == edit.masks.end() ? nullptr : &*found;
}

const LocalMask* findMask(const Adjustments& edit, const Uuid& mask) {
    const auto found = std::ranges::find(edit.masks, mask, &LocalMask::id);
    return found == edit.masks.end() ? nullptr : &*found;
}

MaskComponent* findShape(LocalMask& mask, const Uuid& shape) {
    const auto found = std::ranges::find(mask.components, shape, &MaskComponent::id);
    return found == mask.components.end() ? nullptr : &*found;
}

std::string newMaskName(const Adjustments& edit, MaskComponent::Kind kind) {
    return uniqueName(edit, std::string(kindName(kind)));
}

Uuid addMask(Adjustments& edit, MaskComponent::Kind kind, PixelSize photo, RandomSource& random) {
    LocalMask mask = newMask(random);
    mask.name = newMaskName(edit, kind);
    mask.components.push_back(newShape(kind, MaskComponent::Mode::add, photo, random));
    edit.masks.push_back(std::move(mask));
    return edit.masks.back().id;
}

std::optional<Uuid> addShape(Adjustments& edit, const Uuid& mask, MaskComponent::Kind kind,
                             MaskComponent::Mode mode, PixelSize photo, RandomSource& random) {
    LocalMask* found = findMask(edit, mask);
    if (!found) return std::nullopt;
    found->components.push_back(newShape(kind, mode, photo, random));
    return found->components.back().id;
}

void removeShape(Adjustments& edit, const Uuid& mask, const Uuid& shape) {
    if (LocalMask* found = findMask(edit, mask)) {
        std::erase_if(found->components, [&](const MaskComponent& c) { return c.id == shape; });
    }
}

void removeMask(Adjustments& edit, const Uuid& mask) {
    std::erase_if(edit.masks, [&](const LocalMask& m) { return m.id == mask; });
}

std::optional<Uuid> duplicateMask(Adjustments& edit, const Uuid& mask, RandomSource& random) {
    const auto at = maskAt(edit, mask);
    if (at == edit.masks.end()) return std::nullopt;
    LocalMask copy = *at;
    copy.id = randomUuid(random);
    for (MaskComponent& shape : copy.components)
        shape.id = randomUuid(random);
    copy.name = uniqueName(edit, tidyName(copy.name + " copy"));
    return edit.masks.insert(at + 1, std::move(copy))->id;
}

void moveMask(Adjustments& edit, const Uuid& mask, std::size_t to) {
    const auto at = maskAt(edit, mask);
    if (at == edit.masks.end()) return;
    const auto target =
        edit.masks.begin() + static_cast<std::ptrdiff_t>(std::min(to, edit.masks.size()));
    if (target > at)
        std::rotate(at, at + 1, target);
    else
        std::rotate(target, at, at + 1);
}

void renameMask(Adjustments& edit, const Uuid& mask, std::string name) {
    LocalMask* found = findMask(edit, mask);
    name = tidyName(std::move(name));
    if (found && !name.empty()) found->name = std::move(name);
}

void setMaskEnabled(Adjustments& edit, const Uuid& mask, bool enabled) {
    if (LocalMask* found = findMask(edit, mask)) found->enabled = enabled;
}

void invertMask(Adjustments& edit, const Uuid& mask) {
    if (LocalMask* found = findMask(edit, mask)) found->invert = !found->invert;
}

void invertShape(Adjustments& edit, const Uuid& mask, const Uuid& shape) {
    LocalMask* found = findMask(edit, mask);
    MaskComponent* component = found ? findShape(*found, shape) : nullptr;
    if (component) component->invert = !component->invert;
}

void setMaskAmount(Adjustments& edit, const Uuid& mask, double percent) {
    LocalMask* found = findMask(edit, mask);
    if (found && std::isfinite(percent)) found->amount = std::clamp(percent, 0.0, defaultAmount);
}

void resetMaskControls(Adjustments& edit, const Uuid& mask) {
    LocalMask* found = findMask(edit, mask);
    if (!found) return;
    for (const MaskControl& control : maskControlCatalogue())
        found->*control.field = 0;
    found->amount = defaultAmount;
}

} // namespace kelvaro
