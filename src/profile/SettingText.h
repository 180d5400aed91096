// Camera settings as the profile's sentences spell them.
#pragma once

#include <string>

namespace kelvaro {

// "ƒ/1.4", "ƒ/8", "ƒ/0.95": one decimal, two below 1, none that is not needed.
std::string apertureText(double aperture);

} // namespace kelvaro
