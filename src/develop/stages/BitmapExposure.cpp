#include "develop/WhiteBalance.h"
#include "develop/kernels/Kernels.h"
#include "develop/stages/Stages.h"

namespace kelvaro {

namespace {
constexpr WhitePoint kBitmapWhite{6500, 0}; // a finished picture is taken as balanced
}

Image bitmapExposureStage(const Image& image, const StageRun& run) {
    const Adjustments& edit = run.edit;
    if (edit.exposure == 0 && edit.temperature == 0 && edit.tint == 0) return image;
    Image scene = applyKernel(kernel::bitmapToScene(), {image}, {});
    scene = exposureAdjusted(scene, edit.exposure);
    const Image balanced = whiteBalanced(scene, kBitmapWhite, edit.temperature, edit.tint);
    if (balanced == scene) return applyKernel(kernel::sceneToBitmap(), {scene}, {});
    return applyKernel(kernel::balancedToBitmap(), {balanced, scene}, {});
}

} // namespace kelvaro
