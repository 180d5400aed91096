// A made-up sensor behind a made-up lens: from the light of a scene to the numbers of a RGGB colour
// filter array, with black level, masked borders, shot noise and clipping.
#pragma once

#include "samples/Drawing.h"
#include "samples/Records.h"

#include <array>
#include <cstdint>
#include <vector>

namespace kelvaro::samples {

using Matrix3 = std::array<std::array<double, 3>, 3>;
using Triple = std::array<double, 3>;

struct SensorModel {
    Matrix3 underTungsten; // XYZ to camera, standard illuminant A; unused with one illuminant
    Matrix3 underDaylight; // the same for D65
    bool twoIlluminants = true;
    int black = 0, white = 0;          // stored values of no light and of saturation
    double baselineStops = 0;          // how much darker than the meter says the sensor is exposed
    int maskedLeft = 0, maskedTop = 0; // columns and rows without light, even
    double fullWell = 60000;           // electrons at ISO 100
};

struct Mosaic {
    PixelSize size;                     // with the masked borders
    std::vector<std::uint16_t> samples; // RGGB from the top-left
    Triple neutral;                     // camera values of white, green 1
};

SensorModel sensorOf(const PhotoRecord& record);

// `light` holds the pixels as stored; `temperature` in kelvin (4000 … 25000) is that of the light
// in which the scene's (1, 1, 1) is white.
Mosaic expose(const Picture& light, const SensorModel& sensor, const PhotoRecord& record,
              double temperature);

} // namespace kelvaro::samples
