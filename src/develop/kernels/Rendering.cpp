#define KELVARO_KERNEL_TEXT "develop/kernels/Rendering.kernel"
#define KELVARO_KERNELS(each) each(rawRendering)

#include "develop/kernels/Kernels.h"

#include "platform/dialect/Family.inl"
