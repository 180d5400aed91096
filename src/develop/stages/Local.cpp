#include "develop/MaskShapes.h"
#include "develop/kernels/Kernels.h"
#include "develop/stages/Stages.h"

namespace kelvaro {

namespace {

Image applied(const Image& image, const LocalMask& mask, const StageRun& run) {
    const Image weight = maskWeight(mask, run.extent(), run.brushes);
    // Only clarity looks at the guide and at what it describes.
    const bool guided = mask.clarity != 0 && run.guide;
    return applyKernel(kernel::twLocal(),
                       {image, weight, guided ? run.guide : image, guided ? run.original : image},
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
