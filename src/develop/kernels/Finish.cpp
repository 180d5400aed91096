#define KELVARO_KERNEL_TEXT "develop/kernels/Finish.kernel"
#define KELVARO_KERNELS(each) each(kelvaroTone) each(twVignette) each(kelvaroGrain)

#include "develop/kernels/Kernels.h"

#include "platform/dialect/Family.inl"
