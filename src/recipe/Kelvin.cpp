#include "recipe/Kelvin.h"

#include "base/Require.h"
#include "recipe/AdjustmentCatalogue.h"

#include <cmath>
#include <fmt/format.h>

namespace kelvaro {
namespace {

constexpr double miredPerKelvin = 1'000'000;
constexpr double lowestKelvin = 2'000, highestKelvin = 50'000;

const AdjustmentRange& shiftRange() {
    const AdjustmentSpec* spec = findStoredKey("temperature");
    KELVARO_REQUIRE(spec != nullptr);
    return spec->range;
}

} // namespace

double kelvinFromShift(double asShotKelvin, double shift) {
    const double mired = miredPerKelvin / asShotKelvin - shift;
    if (mired <= 1) return highestKelvin;
    const double kelvin = miredPerKelvin / mired;
    if (!(kelvin > lowestKelvin)) return lowestKelvin; // also where the camera reported no number
    return std::min(kelvin, highestKelvin);
}

KelvinRange kelvinRange(double asShotKelvin) {
    return {kelvinFromShift(asShotKelvin, shiftRange().lower),
            kelvinFromShift(asShotKelvin, shiftRange().upper)};
}

double shiftFromKelvin(double asShotKelvin, double enteredKelvin) {
    const KelvinRange range = kelvinRange(asShotKelvin);
    const double kelvin =
        enteredKelvin > range.low ? std::min(enteredKelvin, range.high) : range.low;
    const double shift = miredPerKelvin / asShotKelvin - miredPerKelvin / kelvin;
    return std::isfinite(shift) ? shiftRange().clamped(shift) : 0;
}

std::string kelvinRangeText(double asShotKelvin) {
    const KelvinRange range = kelvinRange(asShotKelvin);
    return fmt::format("{}–{} K. Values outside this range use the nearest limit.",
                       std::lround(range.low), std::lround(range.high));
}

} // namespace kelvaro
