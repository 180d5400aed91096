#include "develop/kernels/Kernels.h"
#include "develop/stages/Stages.h"

namespace kelvaro {

Image rawRenderingStage(const Image& scene) {
    return applyKernel(kernel::rawRendering(), {scene}, {});
}

} // namespace kelvaro
