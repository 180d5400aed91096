#include "develop/kernels/Kernels.h"
#include "develop/stages/Stages.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

// Grain is sized for a photo of this longer side and never finer than 0.36 of its pixels.
constexpr double kGrainLongerSide = 6000, kGrainSize = 1.2, kFinestGrain = 0.3;

} // namespace

Image grainStage(const Image& image, const StageRun& run) {
    if (!(run.edit.grain > 0)) return image;
    const double fullLongerSide = run.extent().longerSide() / run.scale;
    const double size = kGrainSize * std::max(kFinestGrain, fullLongerSide / kGrainLongerSide);
    const double s = run.edit.grainSize / 100;
    const double fine = 0.35 + std::max(-s, 0.0);
    const double medium = 0.35 + (1 - std::abs(s));
    const double coarse = 0.35 + std::max(s, 0.0);
    const double length = std::sqrt(fine * fine + medium * medium + coarse * coarse);
    return applyKernel(
        kernel::kelvaroGrain(), {image},
        {run.edit.grain / 100, size, run.scale, fine / length, medium / length, coarse / length});
}

} // namespace kelvaro
