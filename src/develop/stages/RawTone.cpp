#include "develop/RawToneFilter.h"
#include "develop/stages/Stages.h"

namespace kelvaro {

Image rawToneStage(const Image& scene, const Adjustments& edit, const ToneMaps& maps) {
    const RawToneFilter filter{.inputImage = scene,
                               .settings = edit,
                               .guide = maps.sceneGuide,
                               .guideShift = analysisShift(edit),
                               .haze = maps.haze,
                               .airlight = maps.airlight,
                               .linearInput = {},
                               .linearGain = 1,
                               .endpoints = maps.endpoints};
    return filter.outputImage();
}

} // namespace kelvaro
