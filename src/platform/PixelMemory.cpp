#include "platform/PixelMemory.h"

#include <sys/mman.h>

#include <cstdlib>
#include <new>

namespace kelvaro {

namespace {

constexpr std::size_t kAlignment = 64;
constexpr std::size_t kLargePage = std::size_t(2) << 20;

std::size_t roundedUp(std::size_t bytes, std::size_t unit) {
    return (bytes + unit - 1) / unit * unit;
}

} // namespace

std::byte* allocatePixels(std::size_t bytes) {
    if (bytes > SIZE_MAX - kLargePage) throw std::bad_alloc();
    const std::size_t alignment = bytes >= 2 * kLargePage ? kLargePage : kAlignment;
    const std::size_t size = roundedUp(bytes, alignment);
    void* memory = std::aligned_alloc(alignment, size == 0 ? alignment : size);
    if (!memory) throw std::bad_alloc();
    // Only a hint: a system without large pages answers with an error, and small ones do as well.
    if (alignment == kLargePage) madvise(memory, size, MADV_HUGEPAGE);
    return static_cast<std::byte*>(memory);
}

void freePixels(std::byte* memory) noexcept {
    std::free(memory);
}

} // namespace kelvaro
