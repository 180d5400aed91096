// How the settings of a capture are spelt wherever people read them. Units as in PhotoMeta.
#pragma once

#include <string>

namespace kelvaro {

std::string apertureText(double fNumber);  // "ƒ/1.4", "ƒ/8", "ƒ/1.78"
std::string shutterText(double seconds);   // "1/250 s", "2.5 s"
std::string isoText(int iso);              // "ISO 400"
std::string focalText(double millimetres); // "35 mm"

} // namespace kelvaro
