// The camera matrix with the exposure, on rows of balanced camera values.
#pragma once

#include "platform/raw/SensorImage.h"

namespace kelvaro {

class ColourStep {
public:
    explicit ColourStep(const SensorImage& sensor);
    // The first three rows become linear Rec. 709; the fourth is read for cameras of four colours
    // only, the second and third are not read for monochrome ones. Absurd or non-finite results
    // become 0.
    void run(float* const (&rows)[kMaximumChannels], int count) const;

private:
    float matrix_[3][kMaximumChannels] = {};
    int colours_ = 3;
};

} // namespace kelvaro
