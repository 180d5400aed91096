// The stages of the development pipeline, one source file each, in the order in which Pipeline
// lists them. A stage tests whether its controls are neutral (then it returns the very image it was
// given), scales the controls to its kernel's arguments and adds its node. No stage fails. Any
// thread.
#pragma once

#include "develop/ImageSource.h"
#include "develop/ToneMaps.h"
#include "platform/Renderer.h"
#include "recipe/Adjustments.h"

#include <array>

namespace kelvaro {

class BrushRaster;

// What every stage of one run may look at.
struct StageRun {
    const Adjustments& edit;
    const ToneMaps& maps;
    Image original;       // the finishing chain's input, which maps.guide describes
    double scale = 1;     // output pixels per full-resolution pixel
    BrushRaster& brushes; // rasterised brush shapes
    Image guide; // maps.guide over the whole photo, for all stages that look at it; or none

    const PixelRect& extent() const { return original.extent(); }
};

// The maps of a run of the finishing chain: those that are given, or for a bitmap without any,
// those measured on `input` as far as the recipe needs them. A failed measurement leaves its maps
// out.
ToneMaps toneMapsStage(const Image& input, const Adjustments& edit, const ToneMaps* given,
                       bool toneDeveloped, Renderer& renderer);

// Scene-linear light, RAW photos.
Image exposureStage(const Image& capture, const Adjustments& edit);
Image whiteBalanceStage(const Image& capture, const Adjustments& edit, WhitePoint asShot);
// Keeps the reference's shadow colour where development lifted dark tones. The reference has
// exposure 0 and the current white balance; without one nothing happens.
Image rawColourStage(const Image& developed, const Image& reference);
// Dehaze, shadows and highlights, tone curve (develop/RawToneFilter.h).
Image rawToneStage(const Image& scene, const Adjustments& edit, const ToneMaps& maps);
// The RAW engine's rendering curve: from scene-linear to display-linear light. Always there.
Image rawRenderingStage(const Image& scene);

// Display-linear light, bitmaps only. Exposure and white balance act in the scene domain, so that
// highlights roll off instead of clipping.
Image bitmapExposureStage(const Image& image, const StageRun& run);
Image bitmapHazeStage(const Image& image, const StageRun& run);
Image bitmapToneStage(const Image& image, const StageRun& run);
// Keeps the channels of an edited bitmap inside Display P3.
Image displayP3Stage(const Image& image, const StageRun& run);

// Display-linear light, all photos.
Image clarityStage(const Image& image, const StageRun& run);
Image localStage(const Image& image, const StageRun& run);
Image colourStage(const Image& image, const StageRun& run);
Image monochromeStage(const Image& image, const StageRun& run);
Image vignetteStage(const Image& image, const StageRun& run);
Image grainStage(const Image& image, const StageRun& run);

// Display-linear light, after crop and resize. The rows map the working space to the output space.
Image outputGamutStage(const Image& image, const std::array<std::array<float, 3>, 3>& rows);
Image clippingStage(const Image& image);
Image maskOverlayStage(const Image& image, const Image& weight);

// The exposure in stops by which the scene of this run lies above the one that was analysed: the
// shift of levels and guides, which are measured at exposure 0.
double analysisShift(const Adjustments& edit);

} // namespace kelvaro
