#include "library/SettingTexts.h"

#include "library/SearchText.h"

#include <fmt/format.h>

#include <cmath>

namespace kelvaro {
namespace {

// Up to two decimals, none that is not needed.
std::string number(double value) {
    return fmt::format("{}", std::round(value * 100) / 100);
}

} // namespace

std::string apertureText(double fNumber) {
    return "ƒ/" + number(fNumber);
}

std::string shutterText(double seconds) {
    return shutterNotation(seconds) + " s";
}

std::string isoText(int iso) {
    return fmt::format("ISO {}", iso);
}

std::string focalText(double millimetres) {
    return number(millimetres) + " mm";
}

} // namespace kelvaro
