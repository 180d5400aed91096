// Repairs of single photosites in the stored samples, before anything else looks at them.
#pragma once

#include "platform/raw/DngOpcodes.h"

#include <cstdint>

namespace kelvaro {

// The samples of a sensor with one at each photosite, to be changed in place: those of the active
// area.
struct MosaicSamples {
    // `first` is that of the sensor's active area, whose filters repeat from there.
    MosaicSamples(std::uint16_t* first, const SensorImage& sensor);
    // Places of the nearest photosites of the same colour, by the place in the pattern.
    struct Step {
        int row, column;
    };
    const std::vector<Step>& alike(int row, int column) const {
        return steps[std::size_t((row % period) * period + column % period)];
    }

    std::uint16_t* first;
    std::ptrdiff_t stride;
    int width, height;
    int period = 1; // of the pattern
    std::vector<std::vector<Step>> steps;
};

// What makes a photosite stand out: `times` (2 or 3) as much light as any of its neighbours, and
// `margin` samples more.
struct StuckLimits {
    std::uint16_t black = 0, margin = 0;
    int times = 3;
};

// Adds the places of samples that have one of the values.
void findConstants(const MosaicSamples& samples, const std::vector<std::uint16_t>& values,
                   std::vector<BadPoint>& points);

// Each listed photosite becomes the mean of its sound neighbours of the same colour.
void repairListed(const MosaicSamples& samples, const std::vector<BadPoint>& points);

// Stuck and dead photosites: those that stand alone, so many times as far above black as any of
// their eight neighbours and of the nearest ones of the same colour, or less than a quarter of all
// of these. Light that a lens has drawn is never so narrow. Returns how many were repaired.
int repairStuck(const MosaicSamples& samples, const StuckLimits& limits);

} // namespace kelvaro
