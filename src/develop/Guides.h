// Edge-preserving guides: guided filters (He, Sun and Tang, "Guided Image Filtering", 2010) of a
// photo's log luminance by itself, kept as their coefficients so that they can be applied at any
// size. Inputs are analysis images (longer side at most 512); results have the input's extent.
// Blocking.
#pragma once

#include "platform/Renderer.h"

namespace kelvaro {

inline constexpr int kAnalysisLongerSide = 512;

// The size of analysis images of a photo: longer side 512 but never enlarged, short side rounded,
// at least 1.
PixelSize analysisSize(PixelSize photo);

// The whole photo at analysis size, origin (0, 0).
Image reducedForAnalysis(const Image& photo);

// Draws the image once and for all, so that what builds on it does not repeat the work per tile.
Result<Image> materialised(const Image& image, Renderer& renderer,
                           const Cancellation* cancellation);

// (a, b, 0): base = a y + b for y = log2(max(Y, 0) + 0.0005). For clarity and masks.
Result<Image> toneGuide(const Image& small, Renderer& renderer, const Cancellation* cancellation);

// (a, b, detail): the coarse base and the mid-scale detail of y = log2 of the normalised colour
// length in scene-linear light. For shadows and highlights.
Result<Image> sceneGuide(const Image& sceneSmall, Renderer& renderer,
                         const Cancellation* cancellation);

} // namespace kelvaro
