#include "develop/WhiteBalance.h"

#include "recipe/Kelvin.h"

#include <cmath>

namespace kelvaro {

Image whiteBalanced(const Image& sceneLinear, WhitePoint asShot, double temperature, double tint) {
    if (temperature == 0 && tint == 0) return sceneLinear;
    const bool known = asShot.kelvin > 0 && std::isfinite(asShot.kelvin);
    const double kelvin = known ? asShot.kelvin : 6500;
    const double asShotTint = std::isfinite(asShot.tint) ? asShot.tint : 0;
    const WhitePoint neutral{kelvinFromShift(kelvin, temperature), asShotTint + tint};
    const WhitePoint target{kelvinFromShift(kelvin, 0), asShotTint};
    return temperatureAndTint(sceneLinear, neutral, target);
}

} // namespace kelvaro
