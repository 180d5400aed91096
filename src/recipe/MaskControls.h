// The sliders of the mask panel, in their order: each pairs an entry for display with the field of
// a mask that it reads and writes. Readers, writers and hashing of masks walk this list.
#pragma once

#include "recipe/AdjustmentSpec.h"
#include "recipe/LocalMask.h"

#include <span>
#include <string_view>

namespace kelvaro {

struct MaskControl {
    AdjustmentSpec spec; // its keyPath is null: the value lives in a mask
    double LocalMask::*field = nullptr;

    // The key in a stored mask: the entry's id without "mask.".
    constexpr std::string_view storedKey() const { return spec.id.substr(5); }
};

std::span<const MaskControl> maskControlCatalogue();

} // namespace kelvaro
