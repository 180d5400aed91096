#include "recipe/RecipeActions.h"

#include "recipe/AdjustmentCatalogue.h"
#include "recipe/MaskControls.h"
#include "recipe/NumberText.h"
#include "recipe/RecipeTexts.h"

#include <cmath>
#include <fmt/format.h>

namespace kelvaro {

Adjustments pasted(const Adjustments& clipboard, const Adjustments& target,
                   PasteGeometry geometry) {
    Adjustments result = clipboard;
    if (geometry == PasteGeometry::replace) return result;
    for (const AdjustmentSpec& spec : storedKeyCatalogue()) {
        if (spec.group == AdjustmentSpec::Group::crop) spec.setValue(result, spec.value(target));
    }
    return result;
}

Adjustments revertedToOriginal(Adjustments adjustments) {
    for (const AdjustmentSpec& spec : storedKeyCatalogue())
        spec.setValue(adjustments, 0);
    return adjustments;
}

Adjustments withoutMasks(Adjustments adjustments) {
    adjustments.masks.clear();
    return adjustments;
}

MaskComponent withoutStrokes(const MaskComponent& component) {
    return {component.id,     component.kind,    component.mode,
            component.invert, component.start,   component.end,
            component.angle,  component.feather, {}};
}

LocalMask withoutStrokes(const LocalMask& mask) {
    LocalMask bare;
    bare.id = mask.id;
    bare.name = mask.name;
    bare.enabled = mask.enabled;
    bare.invert = mask.invert;
    bare.amount = mask.amount;
    for (const MaskControl& control : maskControlCatalogue())
        bare.*control.field = mask.*control.field;
    for (const MaskComponent& component : mask.components)
        bare.components.push_back(withoutStrokes(component));
    return bare;
}

Adjustments withoutStrokes(const Adjustments& adjustments) {
    Adjustments bare;
    bare.processVersion = adjustments.processVersion;
    for (const AdjustmentSpec& spec : storedKeyCatalogue())
        spec.setValue(bare, spec.value(adjustments));
    for (const LocalMask& mask : adjustments.masks)
        bare.masks.push_back(withoutStrokes(mask));
    return bare;
}

Adjustments withPanelReset(Adjustments adjustments, AdjustmentSpec::Group group) {
    for (const AdjustmentSpec& spec : storedKeyCatalogue()) {
        if (spec.group == group) spec.setValue(adjustments, 0);
    }
    return adjustments;
}

Result<void> setFromText(Adjustments& adjustments, std::string_view key, std::string_view text) {
    const AdjustmentSpec* spec = findStoredKey(key);
    if (!spec) {
        return fail(FailureKind::malformed, fmt::format("There is no adjustment “{}”.", key));
    }
    const auto number = numberFromText(text);
    if (!number) {
        return fail(FailureKind::malformed,
                    fmt::format("“{}” is not a number for “{}”.", text, key));
    }
    if (!std::isfinite(*number)) {
        return fail(FailureKind::malformed, std::string(texts::notFinite));
    }
    spec->setValue(adjustments, spec->range.clamped(*number));
    return {};
}

std::string pastedNotice(std::size_t count) {
    if (count == 1) return "Adjustments pasted";
    return fmt::format("Adjustments pasted to {} photos", count);
}

} // namespace kelvaro
