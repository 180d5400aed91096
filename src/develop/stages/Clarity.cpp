#include "develop/kernels/Kernels.h"
#include "develop/stages/Stages.h"

namespace kelvaro {

Image clarityStage(const Image& image, const StageRun& run) {
    const Adjustments& edit = run.edit;
    if (edit.clarity == 0 && edit.brightness == 0) return image;
    const bool guided = static_cast<bool>(run.guide);
    return applyKernel(kernel::kelvaroTone(), {image, run.original, guided ? run.guide : image},
                       {edit.brightness / 100, edit.clarity / 100, guided ? 1.0 : 0.0, 0});
}

} // namespace kelvaro
