// The steps in the scene domain: haze, which RAW photos and bitmaps share, and the regional gain
// and tone curve of RAW photos. Each returns the very image it was given when its own controls are
// 0 or what it needs is missing.
#pragma once

#include "develop/ToneMaps.h"
#include "recipe/Adjustments.h"

namespace kelvaro {

inline bool movesRegions(const Adjustments& edit) {
    return edit.shadows != 0 || edit.highlights != 0;
}
inline bool curvesTone(const Adjustments& edit) {
    return edit.contrast != 0 || edit.white != 0 || edit.black != 0;
}

// `haze` is an analysis image of the whole photo, or none.
Image dehazed(const Image& image, const Adjustments& edit, const Image& haze,
              const std::array<double, 3>& airlight);

// The measured endpoints, or those of an unmeasured photo, shifted by `shiftStops`.
ToneEndpoints endpointsOf(const std::optional<ToneEndpoints>& known, const Adjustments& edit,
                          double shiftStops);

// Shadows and highlights, which need the guide, then contrast, whites and blacks, on scene-linear
// light. The guide was measured `shiftStops` below `scene`. Without endpoints those of an
// unmeasured photo count, shifted as much.
Image sceneToned(const Image& scene, const Adjustments& edit, const Image& sceneGuide,
                 const std::optional<ToneEndpoints>& endpoints, double shiftStops);

} // namespace kelvaro
