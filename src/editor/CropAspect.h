// The aspects that a crop can be held to, in menu order, and what their orientation means.
#pragma once

#include "base/Geometry.h"

#include <array>
#include <optional>
#include <string_view>

namespace kelvaro {

enum class Aspect { free, original, square, fourToFive, fiveToSeven, threeToTwo, sixteenToNine };

inline constexpr std::array allAspects{
    Aspect::free,        Aspect::original,   Aspect::square,       Aspect::fourToFive,
    Aspect::fiveToSeven, Aspect::threeToTwo, Aspect::sixteenToNine};

std::string_view title(Aspect aspect);

// Width ÷ height of the crop; none for `free`. Lying, the larger number of the title comes first;
// `original` is the photo's own shape, whichever way that stands. `portrait` inverts.
std::optional<double> aspectRatio(Aspect aspect, bool portrait, PixelSize photo);

// What the orientation toggle says, with its key.
std::string_view orientationTip(bool portrait);

} // namespace kelvaro
