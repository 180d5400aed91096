// What the tone stages of one pipeline run know about their photo: small analysis images, seen at
// full size by stretching them over it, and values. A part that is absent was not needed or could
// not be measured; each stage says what it does then. Immutable once built, any thread.
#pragma once

#include "develop/ToneLevels.h"
#include "platform/Image.h"

#include <array>
#include <optional>

namespace kelvaro {

// Airlight in linear Rec. 709 and the map whose red, green and blue are slope, offset and cap of
// the haze depth over the normalised brightness.
struct HazeModel {
    std::array<double, 3> airlight{};
    Image hazeMap;
};

struct ToneMaps {
    Image guide;                      // (a, b) of log2 luminance of the chain's input
    Image haze;                       // HazeModel::hazeMap
    std::array<double, 3> airlight{}; // as measured, at the run's exposure and white balance
    Image sceneGuide;                 // (a, b, mid-scale detail) in the scene domain
    std::optional<ToneEndpoints> endpoints;
};

} // namespace kelvaro
