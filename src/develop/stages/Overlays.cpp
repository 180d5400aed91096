#include "develop/kernels/Kernels.h"
#include "develop/stages/Stages.h"

namespace kelvaro {

Image clippingStage(const Image& image) {
    return applyKernel(kernel::twClipping(), {image}, {});
}

Image maskOverlayStage(const Image& image, const Image& weight) {
    if (!weight) return image;
    return applyKernel(kernel::twMaskOverlay(), {image, weight}, {});
}

} // namespace kelvaro
