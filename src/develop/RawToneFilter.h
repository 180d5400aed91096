// The RAW tone stage as one object: what it needs, and the image that comes of it. Scene-linear in,
// scene-linear out. It holds a piece of a graph and lives for one run; it is never stored or sent.
#pragma once

#include "develop/ToneMaps.h"
#include "recipe/Adjustments.h"

namespace kelvaro {

struct RawToneFilter {
    Image inputImage;
    const Adjustments& settings;
    Image guide; // scene guide, an analysis image; none: shadows and highlights are skipped
    double guideShift = 0;            // stops from the scene the guide was measured on to the input
    Image haze;                       // none: dehaze is skipped
    std::array<double, 3> airlight{}; // in the input's light
    Image linearInput;                // takes the place of inputImage when there is one
    double linearGain = 1;            // multiplies the input
    std::optional<ToneEndpoints> endpoints;

    // Gain, dehaze, shadows and highlights, tone curve; each only where its controls are not 0.
    Image outputImage() const;
};

} // namespace kelvaro
