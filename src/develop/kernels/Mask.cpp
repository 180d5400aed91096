#define KELVARO_KERNEL_TEXT "develop/kernels/Mask.kernel"
#define KELVARO_KERNELS(each)                                                                      \
    each(twMaskLinear) each(twMaskRadial) each(twMaskCombine) each(twMaskFinish) each(twLocal)

#include "develop/kernels/Kernels.h"

#include "platform/dialect/Family.inl"
