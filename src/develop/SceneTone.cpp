#include "develop/SceneTone.h"

#include "develop/kernels/Kernels.h"

namespace kelvaro {

Image dehazed(const Image& image, const Adjustments& edit, const Image& haze,
              const std::array<double, 3>& airlight) {
    if (edit.dehaze == 0 || !haze) return image;
    return applyKernel(kernel::sceneHaze(), {image, stretched(haze, image.extent())},
                       {edit.dehaze / 100, airlight[0], airlight[1], airlight[2]});
}

Image regionsMoved(const Image& scene, const Adjustments& edit, const Image& sceneGuide,
                   double shiftStops) {
    if (!movesRegions(edit) || !sceneGuide) return scene;
    return applyKernel(kernel::rawGain(), {scene, stretched(sceneGuide, scene.extent())},
                       {edit.shadows / 100, edit.highlights / 100, shiftStops});
}

ToneEndpoints endpointsOf(const std::optional<ToneEndpoints>& known, const Adjustments& edit,
                          double shiftStops) {
    return known.value_or(toneEndpoints({}, shiftStops, edit.shadows / 100, edit.highlights / 100));
}

Image toneCurved(const Image& scene, const Adjustments& edit,
                 const std::optional<ToneEndpoints>& endpoints, double shiftStops) {
    if (!curvesTone(edit)) return scene;
    const ToneEndpoints e = endpointsOf(endpoints, edit, shiftStops);
    return applyKernel(
        kernel::sceneTone(), {scene},
        {edit.contrast / 100, edit.white / 100, edit.black / 100, e.x, e.y, e.z, e.w});
}

} // namespace kelvaro
