#define KELVARO_KERNEL_TEXT "develop/kernels/Haze.kernel"
#define KELVARO_KERNELS(each) each(sceneHaze)

#include "develop/kernels/Kernels.h"

#include "platform/dialect/Family.inl"
