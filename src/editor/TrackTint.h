// The colours behind a tinted slider: they show where the picture goes when the knob moves that
// way.
#pragma once

#include "recipe/AdjustmentSpec.h"

#include <cstdint>
#include <span>

namespace kelvaro {

struct TrackStop {
    double position = 0;                       // 0 … 1 along the row
    std::uint8_t red = 0, green = 0, blue = 0; // sRGB
    bool operator==(const TrackStop&) const = default;
};

// In rising position from 0 to 1; none for `plain`, which is drawn in the window's own grey.
std::span<const TrackStop> trackTint(AdjustmentSpec::Track track);

} // namespace kelvaro
