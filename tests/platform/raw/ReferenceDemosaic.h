// The demosaic written plainly, one photosite at a time: what the vector code is compared with.
#pragma once

#include "platform/raw/Demosaic.h"

#include <vector>

namespace kelvaro::test {

// The mosaic and the planes are width × height; a border of kDemosaicBorder is not valid.
void referenceDemosaic(const std::vector<float>& mosaic, int width, int height, BayerPhase phase,
                       std::vector<float> (&planes)[3]);

} // namespace kelvaro::test
