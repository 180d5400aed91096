// Random bytes that are the same in every run; from any thread, as the system's are.
#pragma once

#include "platform/Random.h"

#include <cstdint>
#include <mutex>
#include <random>

namespace kelvaro {

class SeededRandom final : public RandomSource {
public:
    explicit SeededRandom(std::uint64_t seed = 1) : engine_(seed) {}
    void reseed(std::uint64_t seed) {
        const std::lock_guard lock(mutex_);
        engine_.seed(seed);
    }
    void fill(std::span<std::byte> bytes) override {
        const std::lock_guard lock(mutex_);
        for (std::byte& byte : bytes)
            byte = static_cast<std::byte>(engine_() & 0xFF);
    }

private:
    std::mutex mutex_;
    std::mt19937_64 engine_;
};

} // namespace kelvaro
