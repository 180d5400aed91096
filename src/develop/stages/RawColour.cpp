#include "develop/kernels/Kernels.h"
#include "develop/stages/Stages.h"

namespace kelvaro {

Image rawColourStage(const Image& developed, const Image& reference) {
    if (!reference || reference == developed) return developed;
    return applyKernel(kernel::rawColour(), {developed, reference}, {});
}

} // namespace kelvaro
