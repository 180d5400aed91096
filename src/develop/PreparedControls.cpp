#include "develop/PreparedControls.h"

#include <algorithm>

namespace kelvaro {

namespace {

// Up to here all pixels are kept in memory for settled views, 12 bytes each.
constexpr std::int64_t kMostKeptWhole = 16'000'000;

} // namespace

const RawDevelopSettings& PreparedControls::at(double scale, bool isSettled) const {
    if (isSettled) return scale > 0 && scale <= settledScale ? settled : native;
    return scale > 0 && scale <= 0.5 ? preview : native;
}

PreparedControls preparedControls(const Adjustments& edit, const RawProperties& properties) {
    PreparedControls controls;
    if (properties.supportsSharpness) controls.native.sharpness = edit.sharpness;
    controls.preview = controls.native;
    controls.preview.reduction = 2;
    controls.settled = controls.native;
    if (std::int64_t(properties.size.width) * properties.size.height > kMostKeptWhole) {
        controls.settled = controls.preview;
        controls.settled.fine = true;
    }
    return controls;
}

RawDevelopSettings smallCapture(const RawProperties& properties, int side) {
    // Means of squares dim what lies near the limit of what their pixels can show.
    constexpr int kQuarterPixelsPerPixel = 2;
    const int longer = std::max(properties.size.width, properties.size.height);
    RawDevelopSettings settings;
    settings.captureOnly = true;
    settings.reduction = longer / 4 >= kQuarterPixelsPerPixel * side ? 4 : 2;
    settings.streamed = true;
    return settings;
}

} // namespace kelvaro
