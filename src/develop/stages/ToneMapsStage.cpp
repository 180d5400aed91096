#include "develop/ToneMeasurement.h"
#include "develop/stages/Stages.h"

namespace kelvaro {

ToneMaps toneMapsStage(const Image& input, const Adjustments& edit, const ToneMaps* given,
                       bool toneDeveloped, Renderer& renderer) {
    if (given) return *given;
    if (toneDeveloped) return {};
    const auto found =
        measured({}, input, PhotoDomain::displayLinear, ToneNeeds::of(edit), renderer, nullptr);
    return found ? toneMapsOf(*found, edit, analysisShift(edit)) : ToneMaps{};
}

} // namespace kelvaro
