#include "editor/PasteParts.h"

#include "recipe/AdjustmentCatalogue.h"

namespace kelvaro {

Adjustments withParts(const Adjustments& source, const Adjustments& target,
                      const PasteParts& parts) {
    Adjustments result = target;
    for (const AdjustmentSpec& spec : storedKeyCatalogue())
        if (parts.has(spec.group)) spec.setValue(result, spec.value(source));
    if (parts.masks) result.masks = source.masks;
    return result;
}

} // namespace kelvaro
