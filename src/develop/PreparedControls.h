// The RAW engine's controls prepared for a photo: how it is decoded at full resolution and for a
// view that half of it is enough for.
#pragma once

#include "platform/RawEngine.h"
#include "recipe/Adjustments.h"

namespace kelvaro {

struct PreparedControls {
    RawDevelopSettings native, preview;

    // Those that are enough for `scale` output pixels per full-resolution pixel; `native` for one
    // that is not a positive number.
    const RawDevelopSettings& at(double scale) const;
};

// The recipe's sharpness where the engine offers one.
PreparedControls preparedControls(const Adjustments& edit, const RawProperties& properties);

} // namespace kelvaro
