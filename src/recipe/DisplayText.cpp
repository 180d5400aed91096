#include "recipe/DisplayText.h"

#include "recipe/Kelvin.h"

#include <cmath>
#include <fmt/format.h>

namespace kelvaro {
namespace {

// What rounds to nothing from below would print as "-0".
std::string signedText(double value, int decimals) {
    std::string text = fmt::format("{:+.{}f}", value, decimals);
    if (text.find_first_not_of("-0.") == std::string::npos) text.front() = '+';
    return text;
}

} // namespace

std::string displayText(const AdjustmentSpec& spec, double value, double asShotKelvin) {
    switch (spec.format) {
    case AdjustmentSpec::Format::signed_:
        return signedText(value, 0);
    case AdjustmentSpec::Format::ev:
        return signedText(value, 2) + " EV";
    case AdjustmentSpec::Format::kelvin:
        return fmt::format("{} K", std::lround(kelvinFromShift(asShotKelvin, value)));
    case AdjustmentSpec::Format::toggle:
        break;
    }
    return {};
}

} // namespace kelvaro
