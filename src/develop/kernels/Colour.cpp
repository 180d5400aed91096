#define KELVARO_KERNEL_TEXT "develop/kernels/Colour.kernel"
#define KELVARO_KERNELS(each)                                                                      \
    each(twColour) each(twMono) each(twGamut) each(twOutputGamut) each(displayGamut)

#include "develop/kernels/Kernels.h"

#include "platform/dialect/Family.inl"
