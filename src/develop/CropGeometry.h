// Where the crop lies on the photo and how straightening turns it. Image space: y up, while the
// recipe's fractions count from the photo's top edge. Pure functions, any thread.
#pragma once

#include "platform/Image.h"
#include "recipe/Adjustments.h"

#include <array>

namespace kelvaro {

struct CropGeometry {
    double x = 0, y = 0, width = 0, height = 0; // photo pixels, relative to the photo's corner
    double turnRadians = 0;                     // counter-clockwise, about the photo's centre

    // At least 2% of each side stays, whatever the fractions say.
    static CropGeometry of(const Adjustments& edit, PixelSize photo);

    // The rectangle's edges rounded to whole pixels, at least 1 × 1, inside the photo.
    PixelRect pixels(PixelSize photo) const;

    // The centre of the crop from the photo's centre, then its half size: twVignette's `crop`.
    std::array<double, 4> centredHalves(PixelSize photo) const;
};

// The developed photo turned and cut, with its corner at (0, 0). Without straightening a pure copy
// of the pixels, and without a crop either the image itself; else one resampling with repeated
// edges.
Image straightenedAndCropped(const Image& developed, const Adjustments& edit);

// The same, scaled by `scale` in that one resampling: what a canvas shows. Reducing by more than
// half aliases: develop at a smaller scale instead.
Image straightenedAndCropped(const Image& developed, const Adjustments& edit, double scale);

// Reduced so that the longer side becomes `longEdge` pixels; never enlarged.
Image reducedToLongEdge(const Image& image, double longEdge);

} // namespace kelvaro
