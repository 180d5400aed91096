// Masks as weight images: shapes are drawn or generated over the photo's extent and combined in
// their order. Weights are grey, opaque, 0 … 1. Builds graphs only; any thread.
#pragma once

#include "platform/Image.h"
#include "recipe/LocalMask.h"

#include <optional>
#include <vector>

namespace kelvaro {

class BrushRaster;

// Whether applying the mask could change a pixel: enabled, an amount above 0, a shape, and a
// control other than 0.
bool hasEffect(const LocalMask& mask);

// The mask's combined shape, inverted where the mask says so, times amount / 100. `photo` is the
// extent of the picture it will be applied to. The mask must have a shape.
Image maskWeight(const LocalMask& mask, const PixelRect& photo, BrushRaster& brushes);

// Which masks the editor wants to see.
struct MaskOverlay {
    std::optional<Uuid> mask; // the one being edited, shown even where it is disabled
    bool all = false;         // every enabled mask as well
};

// The shapes (amount 1) to be shown, joined by maximum; no image when there is none.
Image overlayWeight(const std::vector<LocalMask>& masks, const MaskOverlay& overlay,
                    const PixelRect& photo, BrushRaster& brushes);

} // namespace kelvaro
