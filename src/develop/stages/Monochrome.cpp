#include "develop/kernels/Kernels.h"
#include "develop/stages/Stages.h"

namespace kelvaro {

Image monochromeStage(const Image& image, const StageRun& run) {
    if (run.edit.blackAndWhite == 0) return image;
    return applyKernel(kernel::twMono(), {image}, {});
}

} // namespace kelvaro
