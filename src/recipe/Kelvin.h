// The temperature adjustment as people read it. The adjustment is a shift in mired (a million
// divided by kelvin) from the photo's as-shot white balance; a positive shift is warmer and reads
// higher.
#pragma once

#include <string>

namespace kelvaro {

struct KelvinRange {
    double low = 0, high = 0;
};

// The colour temperature in kelvin, 2,000 … 50,000, not rounded.
double kelvinFromShift(double asShotKelvin, double shift);

// What the ends of the temperature slider read for this photo, not rounded.
KelvinRange kelvinRange(double asShotKelvin);

// The shift for a temperature that was typed in: brought into the photo's range first, and the
// shift then into the slider's range, so that a value outside lands on the nearest end.
double shiftFromKelvin(double asShotKelvin, double enteredKelvin);

// The line under the entry field, for example "2857–20000 K. Values outside this range use the
// nearest limit."
std::string kelvinRangeText(double asShotKelvin);

} // namespace kelvaro
