// Repairs of single photosites in the stored samples, before anything else looks at them.
#pragma once

#include "platform/raw/DngOpcodes.h"

#include <cstdint>

namespace kelvaro {

// The samples of a Bayer sensor's active area, to be changed in place.
struct BayerSamples {
    std::uint16_t* first = nullptr; // of the active area
    std::ptrdiff_t stride = 0;
    int width = 0, height = 0;
};

// Adds the places of samples that have one of the values.
void findConstants(const BayerSamples& samples, const std::vector<std::uint16_t>& values,
                   std::vector<BadPoint>& points);

// Each listed photosite becomes the mean of its sound neighbours of the same colour, two steps
// away.
void repairListed(const BayerSamples& samples, const std::vector<BadPoint>& points);

// Stuck and dead photosites: those that stand alone, more than three times as far above `black` as
// any of their eight neighbours and of the four of the same colour, or less than a quarter of all
// of these, by at least `margin` samples. Light that a lens has drawn is never so narrow. Returns
// how many were repaired.
int repairStuck(const BayerSamples& samples, std::uint16_t black, std::uint16_t margin);

} // namespace kelvaro
