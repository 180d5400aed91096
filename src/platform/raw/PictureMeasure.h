// What is measured of a sensor's samples as a whole, once for all developments of them.
#pragma once

#include "platform/raw/LocalColour.h"

#include <memory>
#include <mutex>

namespace kelvaro {

struct PictureMeasure {
    std::once_flag once; // what follows is measured when it is first needed
    float darkNoise = 0;
    std::shared_ptr<const LocalColour> surroundings; // null where nothing is saturated
};

} // namespace kelvaro
