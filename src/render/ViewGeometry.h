// Where the pixels of a view lie on the photo: sizes of scaled pictures and the mapping between
// them. Pure functions, any thread.
#pragma once

#include "platform/Image.h"
#include "render/ViewRequest.h"

namespace kelvaro {

// A request resolved for a photo of known size.
struct ViewGeometry {
    PixelSize photo; // full resolution
    PixelRect crop;  // the part of it that is the picture
    double turnRadians = 0;
    double scale = 1;      // device pixels per photo pixel
    PixelSize pictureSize; // the scaled picture
    PixelRect rect;        // the visible part of it; perhaps empty

    static ViewGeometry of(const ViewRequest& request, PixelSize photo);
    // The resolution that a picture of the whole photo needs for this view, at most its own.
    double neededScale() const { return scale < 1 ? scale : 1; }
};

// The developed photo (or any picture of the whole of it, at whatever resolution, with its corner
// at (0, 0)) as the picture of the view: turned, cropped and scaled in one resampling, in device
// pixels that are `coarseness` times as large. The pixels themselves where they fall together.
Image shapedForView(const Image& developed, const ViewGeometry& geometry, int coarseness);

// The device pixels in which a view shows this part of the photo, with `marginPx` of them around it
// for what the resampling reaches; cut to the view's rectangle.
PixelRect shownPart(const ViewGeometry& geometry, const PixelRect& photoPart, int marginPx);

// The coarse pixels that cover the view's rectangle, and what they cover in device pixels, which
// may be a little more than the picture.
struct CoarseRect {
    PixelRect pixels, covered;
};
CoarseRect coarseRect(const ViewGeometry& geometry, int coarseness);

} // namespace kelvaro
