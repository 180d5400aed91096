#define KELVARO_KERNEL_TEXT "develop/kernels/Domain.kernel"
#define KELVARO_KERNELS(each)                                                                      \
    each(bitmapToScene) each(sceneToBitmap) each(bitmapRelit) each(rawColour)

#include "develop/kernels/Kernels.h"

#include "platform/dialect/Family.inl"
