// Random bytes that are the same in every run.
#pragma once

#include "platform/Random.h"

#include <cstdint>
#include <random>

namespace kelvaro {

class SeededRandom final : public RandomSource {
public:
    explicit SeededRandom(std::uint64_t seed = 1) : engine_(seed) {}
    void fill(std::span<std::byte> bytes) override {
        for (std::byte& byte : bytes)
            byte = static_cast<std::byte>(engine_() & 0xFF);
    }

private:
    std::mt19937_64 engine_;
};

} // namespace kelvaro
