#include "platform/PixelMemory.h"

#include "base/Locked.h"
#include "platform/FreeMemory.h"

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

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kKeepsSpares = false; // or a use after the end would not be found
#elif defined(__has_feature)
constexpr bool kKeepsSpares = !__has_feature(address_sanitizer) && !__has_feature(thread_sanitizer);
#else
constexpr bool kKeepsSpares = true;
#endif

std::size_t roundedUp(std::size_t bytes, std::size_t unit) {
    return (bytes + unit - 1) / unit * unit;
}

// Lies right before the pixels of each block.
struct alignas(kAlignment) Header {
    void* base = nullptr;
    std::size_t mapped = 0; // bytes from there on; 0: of the heap
    std::size_t size = 0;   // of the pixels
};

Header& headerOf(std::byte* memory) {
    return *std::bit_cast<Header*>(memory - sizeof(Header));
}

std::byte* withHeader(std::byte* memory, const Header& header) {
    new (memory - sizeof(Header)) Header(header);
    return memory;
}

std::byte* heapBlock(std::size_t size) {
    void* base = std::aligned_alloc(kAlignment, sizeof(Header) + roundedUp(size, kAlignment));
    if (!base) return nullptr;
    return withHeader(static_cast<std::byte*>(base) + sizeof(Header), {base, 0, size});
}

// Of the system itself: in the heap, blocks of many sizes that come and go leave gaps that nobody
// uses and that the system never gets back.
std::byte* mappedBlock(std::size_t size) {
    const std::size_t alignment = size >= 2 * kLargePage ? kLargePage : kPage;
    const std::size_t length = size + alignment + kPage;
    void* all = mmap(nullptr, length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (all == MAP_FAILED) return nullptr;
    const auto begin = std::bit_cast<std::uintptr_t>(all);
    const std::uintptr_t pixels = roundedUp(begin + kPage, alignment), base = pixels - kPage;
    const std::uintptr_t end = pixels + size;
    if (base > begin) munmap(all, base - begin);
    if (begin + length > end) munmap(std::bit_cast<void*>(end), begin + length - end);
    // Only a hint: a system without large pages answers with an error, and small ones do as well.
    if (alignment == kLargePage) madvise(std::bit_cast<void*>(pixels), size, MADV_HUGEPAGE);
    return withHeader(std::bit_cast<std::byte*>(pixels),
                      {std::bit_cast<void*>(base), end - base, size});
}

void returned(std::byte* memory) noexcept {
    if (!memory) return;
    const Header header = headerOf(memory);
    if (header.mapped > 0)
        munmap(header.base, header.mapped);
    else
        std::free(header.base);
}

// Blocks that were freed last, newest first. Their pages are marked as free, so that a system short
// of memory takes them without asking; until then writing to them again costs nothing.
struct Spares {
    static constexpr std::size_t most = 16;
    std::array<std::byte*, most> blocks{};
    std::size_t bytes = 0;

    // One of at least `size`, and not much more; null where there is none.
    std::byte* taken(std::size_t size) {
        for (std::byte*& block : blocks) {
            const std::size_t has = block ? headerOf(block).size : 0;
            if (has < size || has > size + size / 4) continue;
            bytes -= has;
            return std::exchange(block, nullptr);
        }
        return nullptr;
    }
    // Room is made by those that were kept longest, which are returned.
    Spares kept(std::byte* block) {
        Spares dropped;
        std::rotate(blocks.begin(), std::prev(blocks.end()), blocks.end());
        std::swap(dropped.blocks[0], blocks[0]);
        if (dropped.blocks[0]) bytes -= headerOf(dropped.blocks[0]).size;
        blocks[0] = block;
        bytes += headerOf(block).size;
        for (std::size_t at = most; at-- > 0 && bytes > mostSparePixelBytes;) {
            if (!blocks[at]) continue;
            bytes -= headerOf(blocks[at]).size;
            dropped.blocks[at] = std::exchange(blocks[at], nullptr);
        }
        return dropped;
    }
    // Those that waited longest, until there are `size` bytes of them or nothing is left.
    Spares dropped(std::size_t size) {
        Spares oldest;
        for (std::size_t at = most; at-- > 0 && oldest.bytes < size;) {
            if (!blocks[at]) continue;
            oldest.bytes += headerOf(blocks[at]).size;
            oldest.blocks[at] = std::exchange(blocks[at], nullptr);
        }
        bytes -= oldest.bytes;
        return oldest;
    }
    void giveBack() const noexcept {
        for (std::byte* block : blocks)
            returned(block);
    }
};

// One for the process, as the C library's heap is, whose part this is.
Locked<Spares>& spares() {
    static Locked<Spares> kept;
    return kept;
}

// What a block really takes: of mapped ones whole large pages, or small ones.
std::size_t roomFor(std::size_t bytes) {
    if (!kKeepsSpares || bytes < kSpareBytes) return roundedUp(bytes, kAlignment);
    return roundedUp(bytes, bytes >= 2 * kLargePage ? kLargePage : kPage);
}

std::byte* newBlock(std::size_t size) {
    return kKeepsSpares && size >= kSpareBytes ? mappedBlock(size) : heapBlock(size);
}

} // namespace

std::byte* allocatePixels(std::size_t bytes) {
    if (bytes > SIZE_MAX / 2) throw std::bad_alloc();
    const std::size_t size = roomFor(bytes);
    if (size >= kSpareBytes) {
        if (std::byte* spare = spares().with([&](Spares& kept) { return kept.taken(size); }))
            return spare;
        // Never on top of what is kept; and no more is returned than that takes, which is time.
        if (size >= kLargeBytes)
            spares().with([&](Spares& kept) { return kept.dropped(size); }).giveBack();
    }
    std::byte* memory = newBlock(size);
    if (!memory) { // where address space is limited, what waits may be all that is in the way
        releaseSparePixels();
        memory = newBlock(size);
    }
    if (!memory) throw std::bad_alloc();
    return memory;
}

void freePixels(std::byte* memory) noexcept {
    if (!memory) return;
    const Header& header = headerOf(memory);
    if (header.mapped == 0 || header.size > mostSparePixelBytes) return returned(memory);
    madvise(memory, header.size, MADV_FREE);
    spares().with([&](Spares& kept) { return kept.kept(memory); }).giveBack();
}

void releaseSparePixels() noexcept {
    spares().with([](Spares& kept) { return std::exchange(kept, Spares{}); }).giveBack();
}

std::size_t sparePixelBytes() noexcept {
    return spares().with([](const Spares& kept) { return kept.bytes; });
}

} // namespace kelvaro
