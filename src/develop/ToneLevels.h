// Where a photo's darkest and brightest tones lie: the measured black and white level, the
// endpoints of the tone curve that follow from them, and the regional gain that moves them.
// Everything is in stops from middle grey (0.18) of scene-linear light. Pure functions, any thread.
#pragma once

#include "platform/Raster.h"

#include <array>

namespace kelvaro {

inline constexpr double kMiddleGrey = 0.18;

struct ToneLevels {
    double lo = -6.0, hi = 2.5; // the values of a photo without a measurement

    bool operator==(const ToneLevels&) const = default;
};

// The 1st and 99th percentile (lower neighbour) of log2(Y / 0.18) over the pixels whose luminance
// is finite and positive, clamped to −10 … −2.5 and 0.5 … 5. With 16 such pixels or fewer, the
// default.
ToneLevels measuredLevels(const ConstTileView& sceneLinear);

// The arguments of sceneTone: x black point, y white point, z and w the widths of the black region
// above x and of the white region below y.
struct ToneEndpoints {
    double x = 0, y = 0, z = 0, w = 0;

    bool operator==(const ToneEndpoints&) const = default;
};

// The gain in stops that rawGain applies at the local base `d`, without its structure term.
// `shadows` and `highlights` are divided by 100 already.
double regionalGainStops(double d, double shadows, double highlights);

// The endpoints of a photo whose levels are shifted by `shiftStops`, after the regional gain that
// runs before the tone curve; at least z + w apart.
ToneEndpoints toneEndpoints(const ToneLevels& levels, double shiftStops, double shadows,
                            double highlights);

} // namespace kelvaro
