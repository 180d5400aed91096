#define KELVARO_KERNEL_TEXT "develop/kernels/Guide.kernel"
#define KELVARO_KERNELS(each)                                                                      \
    each(twLogLuma) each(twGuideAB) each(rawLogNorm) each(rawGuide) each(rawApplyAB)               \
        each(rawMidDetail)

#include "develop/kernels/Kernels.h"

#include "platform/dialect/Family.inl"
