#include "develop/kernels/Kernels.h"
#include "develop/stages/Stages.h"

#include <numbers>

namespace kelvaro {

Image colourStage(const Image& image, const StageRun& run) {
    const Adjustments& edit = run.edit;
    if (edit.hue == 0 && edit.saturation == 0 && edit.vibrance == 0) return image;
    return applyKernel(
        kernel::twColour(), {image},
        {edit.hue / 100 * std::numbers::pi * 0.5, edit.saturation / 100, edit.vibrance / 100});
}

} // namespace kelvaro
