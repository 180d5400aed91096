#include "develop/kernels/Kernels.h"
#include "develop/stages/Stages.h"

namespace kelvaro {

Image outputGamutStage(const Image& image, const std::array<std::array<float, 3>, 3>& rows) {
    std::vector<double> uniforms;
    for (const auto& row : rows)
        uniforms.insert(uniforms.end(), row.begin(), row.end());
    return applyKernel(kernel::displayGamut(), {image}, std::move(uniforms));
}

} // namespace kelvaro
