// The white balance controls as a chromatic adaptation: `temperature` is a mired shift from the
// as-shot white, positive warmer; `tint` is positive towards magenta. Continuous at 0, any thread.
#pragma once

#include "platform/Image.h"

namespace kelvaro {

// The adaptation of scene-linear colours; whiteBalanced() applies it.
Matrix3 whiteBalanceMatrix(WhitePoint asShot, double temperature, double tint);

// From the shifted white (the temperature that the control reads, tint beyond as-shot) to the
// as-shot white; the image itself when both are 0. The as-shot white is held to the limits of that
// reading, so that small shifts make small changes; one that is not a positive number counts as
// 6500 K.
Image whiteBalanced(const Image& sceneLinear, WhitePoint asShot, double temperature, double tint);

} // namespace kelvaro
