// One decoded photo, shared by all pipeline runs on it: the pixels, how large the photo really is,
// and what the camera said about its white. A plain value of handles; copies are cheap. Any thread.
#pragma once

#include "develop/PhotoAnalysis.h"
#include "platform/Image.h"
#include "platform/RawEngine.h"
#include "recipe/Adjustments.h"

#include <filesystem>
#include <memory>

namespace kelvaro {

struct ImageSource {
    std::filesystem::path url;
    std::shared_ptr<PhotoAnalysis> analysis;          // never null; measures when asked
    std::shared_ptr<RawToneAnalysis> rawToneAnalysis; // RAW only, else null
    Image linearCapture;  // RAW: scene-linear, exposure 0, as-shot white; no image for bitmaps
    Image bitmap;         // bitmaps: display-linear; no image for RAW
    Image referenceImage; // RAW: a rendering whose shadow colour is to be kept, exposure 0, as-shot
                          // white; none where the capture itself is the reference
    Image measured;       // RAW: what analyses look at instead of the capture, where that is made
                          // anew with each reading; else none
    PixelRect extent;     // of the photo at full resolution, origin (0, 0)
    double pixelScale = 1;                           // decoded pixels per full-resolution pixel
    double asShotTemperature = 6500, asShotTint = 0; // kelvin; positive towards magenta
    double baselineExposureStops = 0; // RAW: how far the engine brightened the capture
    double defaultSharpness = 0;
    bool supportsSharpness = false;

    bool isRaw() const { return static_cast<bool>(linearCapture); }
    const Image& decoded() const { return isRaw() ? linearCapture : bitmap; }
    WhitePoint asShot() const { return {asShotTemperature, asShotTint}; }
};

// `identity` tells this state of the file from others (its size and time of change, say): analyses
// that were stored under an equal url and identity are this photo's.
ImageSource bitmapSource(std::filesystem::path url, std::string identity, Image bitmap,
                         PixelSize fullSize);
ImageSource rawSource(std::filesystem::path url, std::string identity, Image linearCapture,
                      const RawProperties& properties);

// The same photo with other pixels: a larger decode after a preview, or another sharpness. Keeps
// the analyses, so that the look does not change with the decode they were measured on.
ImageSource withPixels(const ImageSource& source, Image decoded);

// How to decode a RAW photo for a recipe at `scale` output pixels per full-resolution pixel: its
// sharpness where the engine offers one, and half size where that is enough; made from all pixels
// where `isSettled`.
RawDevelopSettings rawSettings(const Adjustments& edit, const RawProperties& properties,
                               double scale, bool isSettled = false);

// The scale at which the photo is really drawn when `scale` is asked for: never enlarged, and a
// scale that is not a positive number counts as 1.
double renderScale(const ImageSource& source, double scale);
// The decoded pixels (or another image of the same photo, such as the reference) at that scale: the
// image itself, or one Lanczos reduction.
Image atRenderScale(const Image& image, const ImageSource& source, double scale);
// The decoded pixels reduced for a view, so that what is developed from them is near what one would
// see of the developed photo reduced: scene light is compressed, as the rendering does, while it is
// averaged. The pixels themselves at their own scale.
Image atViewScale(const ImageSource& source, double scale);

} // namespace kelvaro
