#define KELVARO_KERNEL_TEXT "develop/kernels/Overlay.kernel"
#define KELVARO_KERNELS(each) each(twMaskOverlay) each(twClipping)

#include "develop/kernels/Kernels.h"

#include "platform/dialect/Family.inl"
