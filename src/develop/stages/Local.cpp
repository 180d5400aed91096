#include "develop/MaskShapes.h"
#include "develop/kernels/Kernels.h"
#include "develop/stages/Stages.h"

namespace kelvaro {

namespace {

Image applied(const Image& image, const LocalMask& mask, const StageRun& run) {
    const bool guided = static_cast<bool>(run.maps.guide);
    const Image weight = maskWeight(mask, run.extent(), run.brushes);
    const Image guide = guided ? stretched(run.maps.guide, run.extent()) : run.original;
    return applyKernel(kernel::twLocal(), {image, weight, guide, run.original},
                       {mask.exposure, mask.temperature / 100, mask.tint / 100, mask.contrast / 100,
                        mask.highlights / 100, mask.shadows / 100,
                        guided ? mask.clarity / 100 : 0.0, mask.saturation / 100});
}

} // namespace

Image localStage(const Image& image, const StageRun& run) {
    Image result = image;
    for (const LocalMask& mask : run.edit.masks)
        if (hasEffect(mask)) result = applied(result, mask, run);
    return result;
}

} // namespace kelvaro
