// Memory for pictures: aligned for vectors, uninitialised, and in large pages where it is large,
// since touching 100 MB in small pages for the first time costs more than developing a photo.
#pragma once

#include <cstddef>
#include <memory>

namespace kelvaro {

// `bytes` of memory aligned to 64. Throws std::bad_alloc.
std::byte* allocatePixels(std::size_t bytes);
void freePixels(std::byte* memory) noexcept;

struct PixelMemoryFree {
    void operator()(std::byte* memory) const noexcept { freePixels(memory); }
};
using PixelMemory = std::unique_ptr<std::byte[], PixelMemoryFree>;

} // namespace kelvaro
