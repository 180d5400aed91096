#include "develop/kernels/Kernels.h"
#include "develop/stages/Stages.h"

namespace kelvaro {

Image displayP3Stage(const Image& image, const StageRun& run) {
    if (!isEdited(run.edit)) return image;
    return applyKernel(kernel::twGamut(), {image}, {});
}

} // namespace kelvaro
