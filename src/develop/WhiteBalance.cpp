#include "develop/WhiteBalance.h"

#include "platform/WhiteAdaptation.h"
#include "recipe/Kelvin.h"

#include <cmath>

namespace kelvaro {

namespace {

struct WhiteShift {
    WhitePoint neutral, target;
};

WhiteShift shiftOf(WhitePoint asShot, double temperature, double tint) {
    const bool known = asShot.kelvin > 0 && std::isfinite(asShot.kelvin);
    const double kelvin = known ? asShot.kelvin : 6500;
    const double asShotTint = std::isfinite(asShot.tint) ? asShot.tint : 0;
    return {{kelvinFromShift(kelvin, temperature), asShotTint + tint},
            {kelvinFromShift(kelvin, 0), asShotTint}};
}

} // namespace

Matrix3 whiteBalanceMatrix(WhitePoint asShot, double temperature, double tint) {
    const WhiteShift shift = shiftOf(asShot, temperature, tint);
    return whiteAdaptationMatrix(shift.neutral, shift.target);
}

Image whiteBalanced(const Image& sceneLinear, WhitePoint asShot, double temperature, double tint) {
    if (temperature == 0 && tint == 0) return sceneLinear;
    const WhiteShift shift = shiftOf(asShot, temperature, tint);
    return temperatureAndTint(sceneLinear, shift.neutral, shift.target);
}

} // namespace kelvaro
