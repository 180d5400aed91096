// Chromaticity of a white as correlated colour temperature and tint: A. R. Robertson, "Computation
// of Correlated Color Temperature and Distribution Temperature", J. Opt. Soc. Am. 58 (1968). Tint
// is the distance from the Planckian locus in CIE 1960 u, v times 3000: positive for a greenish
// light, whose correction moves the picture towards magenta.
#pragma once

#include <array>
#include <optional>

namespace kelvaro {

struct Chromaticity {
    double x = 0.3127, y = 0.3290; // CIE 1931
};

struct TemperatureTint {
    double kelvin = 6500;
    double tint = 0;
};

// Kelvin is clamped to 1,667 … 100,000 (isotherms of 600 and 10 mired). The isotherms are linearly
// interpolated in mireds: within 0.5% of the true temperature below 20,000 K.
TemperatureTint temperatureOf(const Chromaticity& white);
// The inverse, exact to rounding between the same isotherms.
Chromaticity chromaticityOf(const TemperatureTint& white);

// Temperature of the light sources that EXIF and DNG number (17 is illuminant A); none if unknown.
std::optional<double> temperatureOfLightSource(int code);

} // namespace kelvaro
