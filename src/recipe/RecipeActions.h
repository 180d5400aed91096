// What commands do with whole recipes, as functions from value to value: paste, revert, reset a
// panel, remove masks, set one key by name. Copying is keeping an `Adjustments`.
#pragma once

#include "base/Result.h"
#include "recipe/AdjustmentSpec.h"
#include "recipe/Adjustments.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace kelvaro {

enum class PasteGeometry {
    keepOwn, // the target keeps its own crop and straighten
    replace, // they come from the clipboard too
};

// The target with the clipboard's adjustments and masks.
Adjustments pasted(const Adjustments& clipboard, const Adjustments& target,
                   PasteGeometry geometry = PasteGeometry::keepOwn);

// Every catalogue value 0, crop and straighten included; masks stay.
Adjustments revertedToOriginal(Adjustments adjustments);

Adjustments withoutMasks(Adjustments adjustments);

// The same recipe, its brush shapes without strokes: small, whatever was painted. The strokes are
// never copied on the way.
MaskComponent withoutStrokes(const MaskComponent& component);
LocalMask withoutStrokes(const LocalMask& mask);
Adjustments withoutStrokes(const Adjustments& adjustments);

// Every stored entry of the group 0; for `basic` this clears the retired `brightness` too.
Adjustments withPanelReset(Adjustments adjustments, AdjustmentSpec::Group group);

// Sets the stored key `key` to the number in `text` ("1.5", "+2", "-1e1"), clamped into its range.
// Fails with `malformed` for an unknown key, for text that is no number and for one that is not
// finite; `adjustments` is then unchanged.
Result<void> setFromText(Adjustments& adjustments, std::string_view key, std::string_view text);

// The confirmation after pasting to `count` photos, 1 or more.
std::string pastedNotice(std::size_t count);

} // namespace kelvaro
