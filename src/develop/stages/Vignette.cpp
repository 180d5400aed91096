#include "develop/CropGeometry.h"
#include "develop/kernels/Kernels.h"
#include "develop/stages/Stages.h"

#include <cmath>

namespace kelvaro {

Image vignetteStage(const Image& image, const StageRun& run) {
    if (run.edit.vignette == 0) return image;
    const PixelRect& photo = run.extent();
    const CropGeometry geometry = CropGeometry::of(run.edit, photo.size());
    const auto crop = geometry.centredHalves(photo.size());
    return applyKernel(kernel::twVignette(), {image},
                       {photo.x + photo.width / 2.0, photo.y + photo.height / 2.0, crop[0], crop[1],
                        crop[2], crop[3], std::cos(geometry.turnRadians),
                        std::sin(geometry.turnRadians), run.edit.vignette / 100});
}

} // namespace kelvaro
