#include "platform/FreeMemory.h"

#include "platform/PixelMemory.h"

#include <malloc.h>

namespace kelvaro {

void returnFreeMemory() {
    releaseSparePixels();
    ::malloc_trim(0);
}

} // namespace kelvaro
