// Luminance noise of photos at high sensitivity: where the detail around a pixel is no stronger
// than the sensor's noise alone would make it, part of it is taken away; texture that rises above
// the noise keeps all of it, and so does everything at low sensitivity. Details of 1 and 2 pixels
// (à trous, as for colour), encoded luminance in the compressive domain of the demosaic. One thread
// at a time.
#pragma once

#include "platform/raw/FinishingRows.h"
#include "platform/raw/SplineSmoothing.h"

#include <vector>

namespace kelvaro {

// Standard deviation of the finest detail of noise, and how much of what is noise goes: 0 where it
// is too weak to be seen, else up to 0.6, so that a grain is left.
struct GrainModel {
    NoiseLine noise;
    float share = 0;
};
// `measured` may have texture in it, so it is believed up to 1.2 times what a sensor of middling
// size shows at this ISO sensitivity. None below ISO 800, and where that is not known (0). `gain`
// is what the samples were brightened by.
GrainModel grainModel(const NoiseLine& measured, double sensitivity, double toe, double gain);

class LuminanceNoise {
public:
    static constexpr int kReach = 12; // pixels, and rows that results lag behind
    void resize(int width, std::ptrdiff_t stride);
    // With the newest row `t` of luminance: the row kReach above it is taken from `sharpened` and
    // left there without its noise. Both rings keep 16 rows. Rows follow each other from 0 on.
    void addRow(const GrainModel& grain, const RowRing& luminance, const RowRing& sharpened, int t);

private:
    static constexpr int kRows = 16;
    // Luminance smoothed once and twice; how strong the details are, and that smoothed in two
    // steps.
    std::vector<float> smooth_[2], strength_[2], once_[2], twice_[2], scratch_;
};

} // namespace kelvaro
