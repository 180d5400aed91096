#include "develop/PreparedControls.h"

namespace kelvaro {

const RawDevelopSettings& PreparedControls::at(double scale) const {
    return scale > 0 && scale <= 0.5 ? preview : native;
}

PreparedControls preparedControls(const Adjustments& edit, const RawProperties& properties) {
    PreparedControls controls;
    if (properties.supportsSharpness) controls.native.sharpness = edit.sharpness;
    controls.preview = controls.native;
    controls.preview.reduction = 2;
    return controls;
}

} // namespace kelvaro
