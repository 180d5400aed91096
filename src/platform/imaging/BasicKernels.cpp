#include "platform/imaging/BasicKernels.h"

namespace kelvaro::kernel {

namespace {

void matrixRow(const KernelRow& row) {
    float m[9];
    for (int i = 0; i < 9; ++i)
        m[i] = static_cast<float>(row.uniforms[i]);
    for (std::size_t i = 0; i < row.count; ++i) {
        const float r = row.inputs[0][0][i], g = row.inputs[0][1][i], b = row.inputs[0][2][i];
        for (int k = 0; k < 3; ++k)
            row.output[k][i] = m[3 * k] * r + m[3 * k + 1] * g + m[3 * k + 2] * b;
    }
}

void matrixPixel(KernelPixel& pixel) {
    const double* m = pixel.uniforms;
    const double* s = pixel.inputs[0];
    for (int k = 0; k < 3; ++k)
        pixel.output[k] = m[3 * k] * s[0] + m[3 * k + 1] * s[1] + m[3 * k + 2] * s[2];
}

} // namespace

const Kernel& colourMatrix() {
    static const Kernel kernel{"colourMatrix", 1, 9, matrixRow, matrixRow, matrixPixel};
    return kernel;
}

} // namespace kelvaro::kernel
