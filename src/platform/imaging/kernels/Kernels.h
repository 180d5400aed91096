// The point-wise kernels of the image graph's own operations: exposure, white balance and every
// other matrix are one of them.
#pragma once

#include "platform/Kernel.h"

namespace kelvaro::kernel {

const Kernel& colourMatrix(); // s ; three rows of a 3 × 3 matrix

} // namespace kelvaro::kernel
