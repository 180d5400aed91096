#include "develop/SceneSample.h"

#include "develop/kernels/Kernels.h"

#include <cmath>

namespace kelvaro {

namespace {
constexpr float kClipShare = 0.99f; // of the largest stored value
}

Image sceneAsShot(const ImageSource& source) {
    if (source.isRaw()) return source.linearCapture;
    return applyKernel(kernel::bitmapToScene(), {source.bitmap}, {});
}

Image sceneClipLevel(const ImageSource& source) {
    const float gain =
        source.isRaw() ? static_cast<float>(std::exp2(source.baselineExposureStops)) : 1.0f;
    const float level = kClipShare * gain;
    const Image grey = constantColour({level, level, level, 1});
    return source.isRaw() ? grey : applyKernel(kernel::bitmapToScene(), {grey}, {});
}

} // namespace kelvaro
