#include "platform/FreeMemory.h"

#include <malloc.h>

namespace kelvaro {

void returnFreeMemory() {
    ::malloc_trim(0);
}

} // namespace kelvaro
