#define KELVARO_KERNEL_TEXT "develop/kernels/Reduction.kernel"
#define KELVARO_KERNELS(each) each(compressedLight) each(expandedLight)

#include "develop/kernels/Kernels.h"

#include "platform/dialect/Family.inl"
