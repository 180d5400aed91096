// The white balance picker: from the averaged colour of a small area to the temperature and tint
// that make it neutral. Pure functions, any thread.
#pragma once

#include "platform/Image.h"
#include "recipe/Adjustments.h"

#include <array>
#include <optional>
#include <string_view>

namespace kelvaro {

inline constexpr int pickRadiusPx = 4; // of the averaged area, in photo pixels

// The mean of what the area's pixels hold in scene-linear light at the as-shot white: the RAW
// capture before exposure, or a bitmap through `bitmapToScene`.
struct PickSample {
    std::array<double, 3> rgb{};
    double clippedShare = 0; // of the pixels, those with a channel at the end of its range
};

// Averages an area; `clipLevel` is the value at which a channel holds no more than that.
PickSample pickSample(const ConstTileView& area, double clipLevel);

struct PickedBalance {
    double temperature = 0, tint = 0; // in catalogue units, clamped
    bool isLimited = false;           // the area would need more than the sliders have
};

enum class PickRefusal { clipped, tooDark, asShot };

// None with the reason when the area can't be used: clipped, black, or neutral as shot already.
std::optional<PickedBalance> pickedBalance(const PickSample& sample, WhitePoint asShot,
                                           PickRefusal* refusal);

std::string_view text(PickRefusal refusal);

} // namespace kelvaro
