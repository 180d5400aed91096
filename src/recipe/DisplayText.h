// How the value of an adjustment is shown beside its slider. Never depends on the locale.
#pragma once

#include "recipe/AdjustmentSpec.h"

#include <string>

namespace kelvaro {

// `asShotKelvin` is the photo's as-shot colour temperature, read by the `kelvin` format only. A
// zero never shows a minus. Empty for `toggle`, which is shown as a switch.
std::string displayText(const AdjustmentSpec& spec, double value, double asShotKelvin);

} // namespace kelvaro
