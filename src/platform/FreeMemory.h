// Memory that the program has let go of and the allocator still holds.
#pragma once

#include <cstddef>

namespace kelvaro {

// Blocks of pixels that wait for the next picture (PixelMemory.h), and how much ever does: a
// decoded photo of 24 MP and what its views take.
std::size_t sparePixelBytes() noexcept;
inline constexpr std::size_t mostSparePixelBytes = std::size_t(384) << 20;

// Gives it back to the system: for when memory is short, after caches have let go. Any thread.
void returnFreeMemory();

} // namespace kelvaro
