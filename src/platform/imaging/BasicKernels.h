// The point-wise kernels of the image graph's own operations.
#pragma once

#include "platform/Kernel.h"

namespace kelvaro::kernel {

const Kernel& colourMatrix(); // s ; three rows of a 3 × 3 matrix

} // namespace kelvaro::kernel
