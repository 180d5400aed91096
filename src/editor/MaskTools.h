// What is selected and shown while masks are edited, as a plain value, and its words.
#pragma once

#include "develop/MaskShapes.h"
#include "editor/BrushTool.h"
#include "recipe/Adjustments.h"

#include <optional>
#include <string_view>

namespace kelvaro {

struct MaskToolState {
    std::optional<Uuid> mask, shape; // selected
    bool overlay = false;            // where masks apply is shown in orange
    bool overlayWhilePainting = true;
    bool isPainting = false; // a stroke is being drawn
    BrushTool brush;

    bool operator==(const MaskToolState&) const = default;
};

namespace texts {
inline constexpr std::string_view masksTip =
    "Masks: brush, linear and radial local adjustments (M)";
} // namespace texts

// The selection without what the edit does not have (any more): after undo, say. A selected mask
// has one of its shapes selected, if it has any.
MaskToolState consistent(MaskToolState state, const Adjustments& edit);

// What the renderer is asked to draw over the photo: with a mask selected that one, else all.
MaskOverlay shownOverlay(const MaskToolState& state);

// What the overlay's button says.
std::string_view overlayTip(const MaskToolState& state);

} // namespace kelvaro
