// The fixed, ordered list of all global adjustments. Panels, reading, writing, hashing and
// resetting walk it: a new adjustment is a field of `Adjustments` and one entry here, and nothing
// else.
#pragma once

#include "recipe/AdjustmentSpec.h"

#include <span>

namespace kelvaro {

// The entries with a slider row, in the order of the rows.
std::span<const AdjustmentSpec> sliderCatalogue();
// Those of one panel, in the same order; none for `crop`.
std::span<const AdjustmentSpec> sliderCatalogue(AdjustmentSpec::Group group);

// All that is stored: the slider entries, then the retired `brightness`, the crop edges and
// straighten.
std::span<const AdjustmentSpec> storedKeyCatalogue();
// The stored entry of that id (case-sensitive); null when there is none.
const AdjustmentSpec* findStoredKey(std::string_view id);

} // namespace kelvaro
