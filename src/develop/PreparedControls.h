// The RAW engine's controls prepared for a photo: how it is decoded at full resolution, for a view
// that half of it is enough for, and for one that must show what the full resolution would.
#pragma once

#include "platform/RawEngine.h"
#include "recipe/Adjustments.h"

namespace kelvaro {

struct PreparedControls {
    RawDevelopSettings native, preview, settled;
    // Up to here a half size made of all pixels shows nearly what these would, of photos that are
    // too large to keep them.
    static constexpr double settledScale = 1.0 / 3;

    // Those that are enough for `scale` output pixels per full-resolution pixel; `native` for one
    // that is not a positive number. `isSettled` asks for `settled` instead of `preview`.
    const RawDevelopSettings& at(double scale, bool isSettled = false) const;
};

// The recipe's sharpness where the engine offers one.
PreparedControls preparedControls(const Adjustments& edit, const RawProperties& properties);

// A capture for what looks at no more than `side` pixels along the longer side, once: a photo's
// measurement, or its thumbnail.
RawDevelopSettings smallCapture(const RawProperties& properties, int side);

} // namespace kelvaro
