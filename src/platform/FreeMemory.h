// Memory that the program has let go of and the allocator still holds.
#pragma once

namespace kelvaro {

// Gives it back to the system: for when memory is short, after caches have let go. Any thread.
void returnFreeMemory();

} // namespace kelvaro
