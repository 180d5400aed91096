// Which parts of a recipe are taken over when it is pasted or applied as a preset. Plain value.
#pragma once

#include "recipe/AdjustmentSpec.h"
#include "recipe/Adjustments.h"

namespace kelvaro {

struct PasteParts {
    // By `AdjustmentSpec::Group`; crop and straighten stay the target's own unless asked for.
    std::array<bool, AdjustmentSpec::allGroups.size()> groups{true, true, true, true, true, false};
    bool masks = true;

    bool has(AdjustmentSpec::Group group) const { return groups[static_cast<std::size_t>(group)]; }
    void set(AdjustmentSpec::Group group, bool taken) {
        groups[static_cast<std::size_t>(group)] = taken;
    }
    bool operator==(const PasteParts&) const = default;
};

// The target with those parts of `source`. What a part holds is replaced, not added to.
Adjustments withParts(const Adjustments& source, const Adjustments& target,
                      const PasteParts& parts);

} // namespace kelvaro
