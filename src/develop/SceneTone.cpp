#include "develop/SceneTone.h"

#include "develop/kernels/Kernels.h"

namespace kelvaro {

Image dehazed(const Image& image, const Adjustments& edit, const Image& haze,
              const std::array<double, 3>& airlight) {
    if (edit.dehaze == 0 || !haze) return image;
    return applyKernel(kernel::sceneHaze(), {image, stretched(haze, image.extent())},
                       {edit.dehaze / 100, airlight[0], airlight[1], airlight[2]});
}

ToneEndpoints endpointsOf(const std::optional<ToneEndpoints>& known, const Adjustments& edit,
                          double shiftStops) {
    return known.value_or(toneEndpoints({}, shiftStops, edit.shadows / 100, edit.highlights / 100));
}

Image sceneToned(const Image& scene, const Adjustments& edit, const Image& sceneGuide,
                 const std::optional<ToneEndpoints>& endpoints, double shiftStops) {
    const bool moves = movesRegions(edit) && sceneGuide, curves = curvesTone(edit);
    if (!moves && !curves) return scene;
    const std::vector<double> gain{edit.shadows / 100, edit.highlights / 100, shiftStops};
    const Image guide = moves ? stretched(sceneGuide, scene.extent()) : Image{};
    if (!curves) return applyKernel(kernel::rawGain(), {scene, guide}, gain);
    const ToneEndpoints e = endpointsOf(endpoints, edit, shiftStops);
    std::vector<double> curve{
        edit.contrast / 100, edit.white / 100, edit.black / 100, e.x, e.y, e.z, e.w};
    if (!moves) return applyKernel(kernel::sceneTone(), {scene}, curve);
    curve.insert(curve.begin(), gain.begin(), gain.end());
    return applyKernel(kernel::rawTone(), {scene, guide}, curve);
}

} // namespace kelvaro
