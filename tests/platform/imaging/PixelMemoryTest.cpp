// Picture memory that waits for the next picture is nobody else's meanwhile.
#include "platform/PixelMemory.h"

#include "platform/FreeMemory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <random>
#include <thread>
#include <vector>

namespace kelvaro {
namespace {

constexpr std::size_t kMiB = std::size_t(1) << 20;

TEST(PixelMemory, IsAlignedAndWritableAtEverySize) {
    for (const std::size_t bytes : {std::size_t(0), std::size_t(1), kMiB - 1, kMiB, 5 * kMiB + 3,
                                    40 * kMiB, 47 * kMiB, 40 * kMiB}) {
        const PixelMemory memory(allocatePixels(bytes));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(memory.get()) % 64, 0) << bytes;
        std::memset(memory.get(), 7, bytes);
    }
    EXPECT_THROW(static_cast<void>(allocatePixels(SIZE_MAX)), std::bad_alloc);
}

// Blocks that are freed by one thread and taken by another, some of them given back to the system.
TEST(PixelMemory, IsHandedOutOnlyOnce) {
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (unsigned t = 1; t <= 4; ++t)
        threads.emplace_back([&wrong, t] {
            std::mt19937 random(t);
            struct Block {
                PixelMemory memory;
                std::size_t bytes;
            };
            std::vector<Block> blocks(5);
            for (unsigned turn = 0; turn < 60; ++turn) {
                Block& block = blocks[random() % blocks.size()];
                for (const std::size_t at : {std::size_t(0), block.bytes / 2, block.bytes - 1})
                    wrong += block.memory && block.memory[at] != std::byte(t);
                const std::size_t bytes = kMiB * (1 + random() % 18) - random() % 5000;
                block = {}; // given back first, as a loop over pictures does
                block = {PixelMemory(allocatePixels(bytes)), bytes};
                for (const std::size_t at : {std::size_t(0), bytes / 2, bytes - 1})
                    block.memory[at] = std::byte(t);
                if (turn % 20 == 0) releaseSparePixels();
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, 0);
    releaseSparePixels();
}

// Pictures of many sizes, one after another as somebody walks through a folder: what waits never
// grows beyond its bound, goes when that is asked for, and serves the next picture of its size.
TEST(PixelMemory, KeepsABoundedAmount) {
    releaseSparePixels();
    EXPECT_EQ(sparePixelBytes(), 0u);
    std::mt19937 random(11);
    std::vector<PixelMemory> held;
    for (int photo = 0; photo < 400; ++photo) {
        const std::size_t most = photo % 7 == 0 ? 300 : 40;
        held.push_back(PixelMemory(allocatePixels(kMiB * (1 + random() % most))));
        if (held.size() > 6) held.erase(held.begin() + random() % 6);
        ASSERT_LE(sparePixelBytes(), mostSparePixelBytes) << photo;
    }
    const bool keepsAny = sparePixelBytes() > 0; // builds that look for faults keep none
    held.clear();
    EXPECT_LE(sparePixelBytes(), mostSparePixelBytes);
    PixelMemory(allocatePixels(mostSparePixelBytes + 8 * kMiB)).reset();
    EXPECT_LE(sparePixelBytes(), mostSparePixelBytes);
    releaseSparePixels();
    EXPECT_EQ(sparePixelBytes(), 0u);
    if (!keepsAny) return;
    PixelMemory(allocatePixels(5 * kMiB)).reset();
    const std::size_t waits = sparePixelBytes();
    EXPECT_GE(waits, 5 * kMiB);
    const PixelMemory again(allocatePixels(5 * kMiB));
    EXPECT_EQ(sparePixelBytes(), 0u);
}

} // namespace
} // namespace kelvaro
