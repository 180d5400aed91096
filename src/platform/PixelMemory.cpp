#include "platform/PixelMemory.h"

#include "base/Locked.h"

#include <malloc.h>
#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <new>
#include <utility>

namespace kelvaro {

namespace {

constexpr std::size_t kAlignment = 64;
constexpr std::size_t kLargePage = std::size_t(2) << 20;
constexpr std::size_t kPage = 4096;
constexpr std::size_t kSpareBytes = std::size_t(1)
                                    << 20; // smaller blocks the C library keeps itself
constexpr std::size_t kLargeBytes = 8 * kLargePage;

std::size_t roundedUp(std::size_t bytes, std::size_t unit) {
    return (bytes + unit - 1) / unit * unit;
}

std::size_t sizeOf(std::byte* memory) {
    return ::malloc_usable_size(memory);
}

// Blocks that were freed last, newest first. Their pages are marked as free, so that a system short
// of memory takes them without asking; until then writing to them again costs nothing.
struct Spares {
    std::array<std::byte*, 12> blocks{};

    // One of at least `bytes`, and not much more; null where there is none.
    std::byte* taken(std::size_t bytes) {
        for (std::byte*& block : blocks)
            if (block && sizeOf(block) >= bytes && sizeOf(block) <= bytes + bytes / 4)
                return std::exchange(block, nullptr);
        return nullptr;
    }
    // The block that was kept longest makes room and is returned.
    std::byte* kept(std::byte* block) {
        std::rotate(blocks.begin(), std::prev(blocks.end()), blocks.end());
        return std::exchange(blocks[0], block);
    }
};

// One for the process, as the C library's heap is, whose part this is.
Locked<Spares>& spares() {
    static Locked<Spares> kept;
    return kept;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kKeepsSpares = false; // or a use after the end would not be found
#elif defined(__has_feature)
constexpr bool kKeepsSpares = !__has_feature(address_sanitizer) && !__has_feature(thread_sanitizer);
#else
constexpr bool kKeepsSpares = true;
#endif

} // namespace

std::byte* allocatePixels(std::size_t bytes) {
    if (bytes > SIZE_MAX - kLargePage) throw std::bad_alloc();
    const std::size_t alignment = bytes >= 2 * kLargePage ? kLargePage : kAlignment;
    const std::size_t size = roundedUp(bytes, alignment);
    if (size >= kSpareBytes) {
        if (std::byte* spare = spares().with([&](Spares& kept) { return kept.taken(size); }))
            return spare;
        if (size >= kLargeBytes) releaseSparePixels(); // never on top of what is kept
    }
    const std::size_t asked = size == 0 ? alignment : size;
    void* memory = std::aligned_alloc(alignment, asked);
    if (!memory) { // where address space is limited, what waits may be all that is in the way
        releaseSparePixels();
        memory = std::aligned_alloc(alignment, asked);
    }
    if (!memory) throw std::bad_alloc();
    // Only a hint: a system without large pages answers with an error, and small ones do as well.
    if (alignment == kLargePage) madvise(memory, size, MADV_HUGEPAGE);
    return static_cast<std::byte*>(memory);
}

void freePixels(std::byte* memory) noexcept {
    if (kKeepsSpares && memory && sizeOf(memory) >= kSpareBytes) {
        const auto begin = roundedUp(std::bit_cast<std::uintptr_t>(memory), kPage);
        const auto end = (std::bit_cast<std::uintptr_t>(memory) + sizeOf(memory)) / kPage * kPage;
        madvise(std::bit_cast<void*>(begin), end - begin, MADV_FREE);
        memory = spares().with([&](Spares& kept) { return kept.kept(memory); });
    }
    std::free(memory);
}

void releaseSparePixels() noexcept {
    const Spares freed = spares().with([](Spares& kept) { return std::exchange(kept, Spares{}); });
    for (std::byte* block : freed.blocks)
        std::free(block);
}

} // namespace kelvaro
