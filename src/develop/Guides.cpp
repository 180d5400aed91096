#include "develop/Guides.h"

#include "develop/kernels/Kernels.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

constexpr int kFineRadius = 3;
constexpr int kCoarseRadius = 12;
constexpr double kToneRegularisation = 0.12;
constexpr double kFineRegularisation = 0.06;
constexpr double kCoarseRegularisation = 0.35;

Image blurred(const Image& image, int radius) { // edges repeat
    return cropped(boxBlurred(clampedToExtent(image), radius), image.extent());
}

// The blurred coefficients of the guided filter that `fit` solves from the blurred (y, y²). Drawn
// in between: blurs of blurs would be computed again and again tile by tile.
Result<Image> coefficients(const Image& squares, int radius, const Kernel& fit, double eps,
                           Renderer& renderer, const Cancellation* cancellation) {
    const auto fitted =
        materialised(applyKernel(fit, {blurred(squares, radius)}, {eps}), renderer, cancellation);
    if (!fitted) return fitted;
    return materialised(blurred(*fitted, radius), renderer, cancellation);
}

} // namespace

PixelSize analysisSize(PixelSize photo) {
    const int longer = std::max(photo.width, photo.height);
    if (longer <= kAnalysisLongerSide) return photo;
    const double scale = double(kAnalysisLongerSide) / longer;
    const auto scaled = [&](int side) {
        return side == longer ? kAnalysisLongerSide : std::max(1, int(std::lround(side * scale)));
    };
    return {scaled(photo.width), scaled(photo.height)};
}

Image reducedForAnalysis(const Image& photo) {
    return lanczosResized(photo, analysisSize(photo.extent().size()));
}

Result<Image> materialised(const Image& image, Renderer& renderer,
                           const Cancellation* cancellation) {
    auto drawn = renderer.renderRaster(image, image.extent(), cancellation);
    if (!drawn) return fail(std::move(drawn).error());
    return imageFrom(std::move(*drawn));
}

Result<Image> toneGuide(const Image& small, Renderer& renderer, const Cancellation* cancellation) {
    const Image log = applyKernel(kernel::twLogLuma(), {small}, {});
    return coefficients(log, kCoarseRadius, kernel::twGuideAB(), kToneRegularisation, renderer,
                        cancellation);
}

Result<Image> sceneGuide(const Image& sceneSmall, Renderer& renderer,
                         const Cancellation* cancellation) {
    const Image log = applyKernel(kernel::rawLogNorm(), {sceneSmall}, {});
    const auto fine = coefficients(log, kFineRadius, kernel::rawGuide(), kFineRegularisation,
                                   renderer, cancellation);
    if (!fine) return fine;
    const Image base = applyKernel(kernel::rawApplyAB(), {*fine, log}, {});
    const auto coarse = coefficients(base, kCoarseRadius, kernel::rawGuide(), kCoarseRegularisation,
                                     renderer, cancellation);
    if (!coarse) return coarse;
    return materialised(applyKernel(kernel::rawMidDetail(), {*coarse, base}, {}), renderer,
                        cancellation);
}

} // namespace kelvaro
