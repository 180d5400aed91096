// Where points of the photo (pixels, y up, before straightening and cropping) lie in the view
// (points, y down), and back: a turn, a scale and a shift. Mask handles, brushes, the white balance
// picker and the horizon line live on the photo and are drawn and dragged through this. Plain
// value.
#pragma once

#include "editor/CanvasView.h"
#include "recipe/Adjustments.h"
#include "recipe/LocalMask.h"

namespace kelvaro {

class PhotoPlacement {
public:
    // The canvas shows the photo as `edit` straightens and crops it.
    static PhotoPlacement ofPicture(const CanvasView& canvas, const Adjustments& edit,
                                    PixelSize photo);
    // The canvas shows the whole photo, turned about its centre under the crop.
    static PhotoPlacement ofWhole(const CanvasView& canvas, const Adjustments& edit,
                                  PixelSize photo);

    Point toView(Point photoPoint) const;
    Point toPhoto(Point viewPoint) const;
    // Mask points are normalised by the longer side.
    Point toView(MaskPoint point) const;
    MaskPoint toMask(Point viewPoint) const;

    double pointsPerPixel() const { return canvas_.pointsPerPixel(); }
    // Points of a length of 1 in mask coordinates.
    double pointsPerMaskUnit() const { return pointsPerPixel() * longer_; }
    double turnRadians() const { return turn_; } // counter-clockwise as seen
    PixelSize photo() const { return photo_; }

private:
    PhotoPlacement(const CanvasView& canvas, PixelSize photo, double turn, Point corner);

    CanvasView canvas_;
    PixelSize photo_;
    double turn_, longer_;
    Point corner_; // of the picture, on the turned photo
    double cos_, sin_;
};

} // namespace kelvaro
