#include "develop/Pipeline.h"

#include "develop/ToneMeasurement.h"
#include "develop/stages/Stages.h"

namespace kelvaro {

Image Pipeline::developed(const ImageSource& source, const Adjustments& edit, const ToneMaps* maps,
                          double scale) const {
    const double drawn = renderScale(source, scale);
    const Image input = atRenderScale(source.decoded(), source, scale);
    if (!source.isRaw()) return finished(input, edit, maps, false, drawn);

    const Image reference =
        source.referenceImage ? atRenderScale(source.referenceImage, source, scale) : Image{};
    const Image developed =
        rawDeveloped(input, reference, source.asShot(), edit, maps ? *maps : ToneMaps{});
    return finished(developed, edit, maps, true, drawn);
}

Image Pipeline::rawDeveloped(const Image& capture, const Image& reference, WhitePoint asShot,
                             const Adjustments& edit, const ToneMaps& maps) {
    Image image = exposureStage(capture, edit);
    image = whiteBalanceStage(image, edit, asShot);
    image = rawColourStage(image, reference ? whiteBalanceStage(reference, edit, asShot) : Image{});
    image = rawToneStage(image, edit, maps);
    return rawRenderingStage(image);
}

Image Pipeline::finished(const Image& input, const Adjustments& edit, const ToneMaps* maps,
                         bool toneDeveloped, double scale) const {
    const ToneMaps known = toneMapsStage(input, edit, maps, toneDeveloped, renderer_);
    const Image guide = known.guide ? stretched(known.guide, input.extent()) : Image{};
    const StageRun run{edit, known, input, scale, brushes_, guide};
    const bool bitmap = !toneDeveloped;

    Image image = input;
    if (bitmap) image = bitmapExposureStage(image, run);
    if (bitmap) image = bitmapHazeStage(image, run);
    image = clarityStage(image, run);
    if (bitmap) image = bitmapToneStage(image, run);
    image = localStage(image, run);
    image = colourStage(image, run);
    image = monochromeStage(image, run);
    image = vignetteStage(image, run);
    image = grainStage(image, run);
    if (bitmap) image = displayP3Stage(image, run);
    return image;
}

Image Pipeline::gamutMapped(const Image& image, OutputSpace space) {
    return outputGamutStage(image, bitmapFormat(space, SampleType::f32).toTarget);
}

Image Pipeline::withClippingShown(const Image& image) {
    return clippingStage(image);
}

Image Pipeline::withMaskShown(const Image& image, const Image& weight) {
    return maskOverlayStage(image, weight);
}

} // namespace kelvaro
