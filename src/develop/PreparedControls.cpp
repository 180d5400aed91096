#include "develop/PreparedControls.h"

namespace kelvaro {

const RawDevelopSettings& PreparedControls::at(double scale, bool isSettled) const {
    if (isSettled) return scale > 0 && scale <= settledScale ? settled : native;
    return scale > 0 && scale <= 0.5 ? preview : native;
}

PreparedControls preparedControls(const Adjustments& edit, const RawProperties& properties) {
    PreparedControls controls;
    if (properties.supportsSharpness) controls.native.sharpness = edit.sharpness;
    controls.preview = controls.native;
    controls.preview.reduction = 2;
    controls.settled = controls.preview;
    controls.settled.fine = true;
    return controls;
}

} // namespace kelvaro
