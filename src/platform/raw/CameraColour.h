// From what a camera file says about its colours to one matrix: white-balanced camera values to
// linear Rec. 709. Follows the DNG 1.6 description (chapter "Mapping Camera Color Space to CIE XYZ
// Space") with Bradford adaptation to D65; for other files the camera's one matrix is used the same
// way.
#pragma once

#include "platform/raw/ColourTemperature.h"

#include <array>
#include <optional>

namespace kelvaro {

inline constexpr int kMaximumChannels = 4;
using ChannelValues = std::array<double, kMaximumChannels>;
// Rows are camera channels, columns X, Y, Z.
using CameraFromXyz = std::array<std::array<double, 3>, kMaximumChannels>;
// Rows are X, Y, Z or red, green, blue, columns camera channels.
using FromCamera = std::array<std::array<double, kMaximumChannels>, 3>;

// Measured under one light.
struct Calibration {
    double kelvin = 6504;
    CameraFromXyz cameraFromXyz{}; // calibration and analogue balance applied
    std::optional<FromCamera>
        forward; // to XYZ under D50, from values balanced for the as-shot white
};

struct CameraMatrices {
    int channels = 3;
    std::optional<Calibration> first, second; // none: unknown colours, taken as Rec. 709
    std::optional<ChannelValues> neutral;     // camera values of the as-shot white, any scale
    std::optional<Chromaticity> whiteXy;      // the as-shot white where the file says it so
};

struct CameraColour {
    // Multipliers that make the as-shot white equal in all channels; the smallest is 1, so that 1
    // is where the first channel of a white surface saturates.
    ChannelValues balance{1, 1, 1, 1};
    FromCamera toWorking{}; // from balanced values; (1, 1, 1, 1) becomes (1, 1, 1)
    TemperatureTint asShot;
};

// Zero, negative, not finite or singular input falls back step by step: to daylight (5500 K) for
// the white, to Rec. 709 for the matrix. The result is finite.
CameraColour cameraColour(const CameraMatrices& camera);

} // namespace kelvaro
