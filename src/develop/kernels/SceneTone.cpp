#define KELVARO_KERNEL_TEXT "develop/kernels/SceneTone.kernel"
#define KELVARO_KERNELS(each) each(rawGain) each(sceneTone) each(rawTone) each(bitmapTone)

#include "develop/kernels/Kernels.h"

#include "platform/dialect/Family.inl"
