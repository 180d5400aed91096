#include "render/ViewRequest.h"

#include <tuple>

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

bool ViewRequest::looksFromWhere(const ViewRequest& other) const {
    const auto rest = [](const ViewRequest& r) {
        return std::tie(r.fit, r.rect, r.space, r.whole, r.before, r.keepAlpha, r.clipping,
                        r.maskOverlay.mask, r.maskOverlay.all);
    };
    return rest(*this) == rest(other) && (fit || scale == other.scale);
}

bool ViewRequest::showsSameAs(const ViewRequest& other) const {
    return looksFromWhere(other) && edit == other.edit;
}

} // namespace kelvaro
