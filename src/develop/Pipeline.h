// The development pipeline: the stages in their order, for RAW photos, for bitmaps, and for what
// both share. It builds lazy graphs and keeps nothing between runs; nothing here fails or draws,
// except that a bitmap without tone maps is measured at once. Any thread.
#pragma once

#include "develop/ImageSource.h"
#include "develop/ToneMaps.h"
#include "platform/ImageFiles.h"
#include "platform/Renderer.h"
#include "recipe/Adjustments.h"

#include <array>
#include <optional>
#include <string_view>

namespace kelvaro {

class BrushRaster;

class Pipeline {
public:
    // The colour space that a finished picture is shown or written in.
    enum class OutputSpace { sRGB, displayP3 };
    static constexpr std::array allOutputSpaces{OutputSpace::sRGB, OutputSpace::displayP3};
    static std::string_view rawValue(OutputSpace space); // "sRGB", "displayP3"
    static std::optional<OutputSpace> outputSpace(std::string_view rawValue);

    // The renderer measures bitmaps that come without tone maps; both must outlive the pipeline.
    Pipeline(Renderer& renderer, BrushRaster& brushes) : renderer_(renderer), brushes_(brushes) {}

    // The whole photo developed, before crop and output: display-linear, extended range. `scale` is
    // output pixels per full-resolution pixel, as renderScale() limits it.
    Image developed(const ImageSource& source, const Adjustments& edit, const ToneMaps* maps,
                    double scale) const;

    // From a RAW photo's scene-linear capture (exposure 0, as-shot white) to display-linear light.
    // Depends on the pixels given, the photo's analysis and RawParams(edit) alone: a picture of it
    // that was drawn once (`materialised`) serves as the input of finished() until those change.
    static Image rawDeveloped(const Image& capture, const Image& reference, WhitePoint asShot,
                              const Adjustments& edit, const ToneMaps& maps);

    // The finishing chain, display-linear in and out. `toneDeveloped` is set for RAW photos, whose
    // tone is set before. A bitmap without maps is measured as it is given.
    Image finished(const Image& input, const Adjustments& edit, const ToneMaps* maps,
                   bool toneDeveloped, double scale) const;

    // Brings colours into the gamut of `space`, still in working-space coordinates.
    static Image gamutMapped(const Image& image, OutputSpace space);

    // Display steps, after the gamut stage: red where a channel clips, blue where all are black,
    // and orange where a mask weighs. `weight` has the image's extent, or is no image.
    static Image withClippingShown(const Image& image);
    static Image withMaskShown(const Image& image, const Image& weight);

    // How the renderer turns gamut-mapped pixels into samples of that space, and the profile to
    // embed.
    static BitmapFormat bitmapFormat(OutputSpace space, SampleType type);
    static kelvaro::OutputSpace profile(OutputSpace space);

private:
    Renderer& renderer_;
    BrushRaster& brushes_;
};

} // namespace kelvaro
