#include "develop/WhiteBalance.h"
#include "develop/kernels/Kernels.h"
#include "develop/stages/Stages.h"

#include <cmath>

namespace kelvaro {

namespace {
constexpr WhitePoint kBitmapWhite{6500, 0}; // a finished picture is taken as balanced
}

Image bitmapExposureStage(const Image& image, const StageRun& run) {
    const Adjustments& edit = run.edit;
    if (edit.exposure == 0 && edit.temperature == 0 && edit.tint == 0) return image;
    std::vector<double> uniforms{std::exp2(edit.exposure)};
    for (const auto& row : whiteBalanceMatrix(kBitmapWhite, edit.temperature, edit.tint))
        uniforms.insert(uniforms.end(), row.begin(), row.end());
    return applyKernel(kernel::bitmapRelit(), {image}, std::move(uniforms));
}

} // namespace kelvaro
