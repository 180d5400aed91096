// Memory for pictures: aligned for vectors, uninitialised, and in large pages where it is large.
// Touching 100 MB for the first time costs more than developing a photo, so a dozen blocks that
// were freed last wait for the next picture of their size. Any thread.
#pragma once

#include <cstddef>
#include <memory>

namespace kelvaro {

// `bytes` of memory aligned to 64. Throws std::bad_alloc.
std::byte* allocatePixels(std::size_t bytes);
void freePixels(std::byte* memory) noexcept;
// Gives the waiting blocks back to the system.
void releaseSparePixels() noexcept;

struct PixelMemoryFree {
    void operator()(std::byte* memory) const noexcept { freePixels(memory); }
};
using PixelMemory = std::unique_ptr<std::byte[], PixelMemoryFree>;

} // namespace kelvaro
