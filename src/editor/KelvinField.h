// The small field for a temperature in kelvin: its words, and what a typed text becomes.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelvaro {

struct KelvinField {
    std::string_view title, prompt;
    std::string value;     // what stands in the field when it opens, selected
    std::string rangeText; // under it
};

KelvinField kelvinField(double temperature, double asShotKelvin);

// The temperature adjustment for "5400", "5,400 K" or "5400.5"; none when it is no number above 0.
std::optional<double> temperatureFromKelvinText(std::string_view text, double asShotKelvin);

} // namespace kelvaro
