// What a canvas asks to see of the open photo, and what it gets: plain records, any thread.
//
// The picture is the photo developed, straightened and cropped. Scaled by `scale` it has
// viewGeometry()'s size in device pixels; rectangles count in those, origin at the picture's
// lower-left corner, y up.
#pragma once

#include "develop/MaskShapes.h"
#include "develop/Pipeline.h"
#include "platform/Bitmap.h"
#include "recipe/Adjustments.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace kelvaro {

struct ViewRequest {
    Adjustments edit;
    // Device pixels per pixel of the photo; or, where `fit` is set, as much as makes the picture
    // fit into it, never enlarged.
    double scale = 1;
    std::optional<PixelSize> fit;
    std::optional<PixelRect> rect; // what is visible; none: the whole picture
    Pipeline::OutputSpace space = Pipeline::OutputSpace::sRGB;

    bool whole = false;      // the photo without crop and straightening, for the crop tool
    bool before = false;     // without the edit, but cropped and straightened like it
    bool keepAlpha = false;  // transparent pixels stay so, instead of being laid over white
    bool clipping = false;   // overlay of clipped pixels
    MaskOverlay maskOverlay; // overlay of mask weights

    // The user's hand is on a control: a frame in time matters more than a sharp one. Send the last
    // request of a gesture once more without it; a coarse frame is refined by itself as well, as
    // soon as no newer request waits.
    bool interactive = false;
    // The number of the view that is on the canvas. While somebody paints, the part that changed
    // may come alone, to be laid over that one; 0: only whole views.
    std::uint64_t over = 0;

    // What is really developed: `edit`, or for `before` only its crop.
    Adjustments shownEdit() const;
    // Whether both ask for the same pixels; only one of them may be of a gesture.
    bool showsSameAs(const ViewRequest& other) const;
    // The same whatever the edit.
    bool looksFromWhere(const ViewRequest& other) const;
};

// How near to its end a view is; each replaces the one before, over the same rectangle.
enum class ViewStage {
    preview, // the camera's own picture, or one developed from it
    coarse,  // developed at less than the asked resolution, because time demanded it
    fit,     // developed from pixels reduced as far as the scale allows
    full,    // developed from all pixels
};

struct RenderedView {
    // 8 bit, in the asked space; rows top-down. Stretch it over `rect`: a preview or coarse
    // frame has fewer pixels than that.
    std::shared_ptr<const Bitmap> pixels;
    PixelRect rect;        // of the scaled picture, in device pixels
    PixelSize pictureSize; // of the whole scaled picture
    double scale = 1;      // device pixels per photo pixel, where it was to fit
    Pipeline::OutputSpace space = Pipeline::OutputSpace::sRGB;
    ViewStage stage = ViewStage::preview;
    bool isSettled = false;  // developed before it was reduced to the view, as an export is
    bool isFinal = false;    // nothing better will follow for this request
    std::uint64_t frame = 0; // tell RenderSession::displayed when it is on the screen
    // Counted from 1 within a session.
    std::uint64_t number = 0;
    // Not 0: only a part, of the same kind of pixels as the view of this number, and to be laid
    // over it; outside of the part they are equal.
    std::uint64_t over = 0;
};

// A small area of the photo as it was recorded: scene light at the as-shot white, before any edit.
struct SampledArea {
    Raster pixels;
    double clipLevel = 1; // the value at which a channel holds no more
    WhitePoint asShot;
};

// What is known of a photo once it is opened, before its pixels are decoded.
struct PhotoFacts {
    PixelSize size; // upright, full resolution
    bool isRaw = false;
    double asShotTemperature = 6500, asShotTint = 0; // RAW only
    bool supportsSharpness = false;
    double defaultSharpness = 0;
};

} // namespace kelvaro
