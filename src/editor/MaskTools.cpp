#include "editor/MaskTools.h"

#include "editor/MaskList.h"

#include <algorithm>

namespace kelvaro {

MaskToolState consistent(MaskToolState state, const Adjustments& edit) {
    const LocalMask* mask = state.mask ? findMask(edit, *state.mask) : nullptr;
    if (!mask) {
        state.mask.reset();
        state.shape.reset();
        return state;
    }
    const bool hasShape =
        state.shape && std::ranges::count(mask->components, *state.shape, &MaskComponent::id) > 0;
    if (hasShape) return state;
    state.shape.reset();
    if (!mask->components.empty()) state.shape = mask->components.back().id;
    return state;
}

MaskOverlay shownOverlay(const MaskToolState& state) {
    const bool painting = state.isPainting && state.overlayWhilePainting;
    MaskOverlay overlay;
    if (!state.overlay && !painting) return overlay;
    overlay.mask = state.mask;
    overlay.all = !state.mask;
    return overlay;
}

std::string_view overlayTip(const MaskToolState& state) {
    if (state.mask) {
        return state.overlay ? "Hide this mask's orange overlay (O)"
                             : "Show where this mask applies, in orange (O)";
    }
    return state.overlay ? "Hide the orange overlay (O)"
                         : "Show where all the masks apply, in orange (O)";
}

} // namespace kelvaro
