#define KELVARO_KERNEL_TEXT "platform/imaging/kernels/Matrix.kernel"
#define KELVARO_KERNELS(each) each(colourMatrix)

#include "platform/imaging/kernels/Kernels.h"

#include "platform/dialect/Family.inl"
