#include "render/ViewRequest.h"

namespace kelvaro {

Adjustments ViewRequest::shownEdit() const {
    if (!before) return edit;
    Adjustments shown;
    shown.cropLeft = edit.cropLeft;
    shown.cropRight = edit.cropRight;
    shown.cropTop = edit.cropTop;
    shown.cropBottom = edit.cropBottom;
    shown.straighten = edit.straighten;
    // Another sharpness would be another decode, and so a pause where people flip to and fro.
    shown.sharpness = edit.sharpness;
    return shown;
}

} // namespace kelvaro
