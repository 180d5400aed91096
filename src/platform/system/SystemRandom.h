// Random bytes from the system's generator.
#pragma once

#include "platform/Random.h"

namespace kelvaro {

class SystemRandom final : public RandomSource {
public:
    void fill(std::span<std::byte> bytes) override;
};

} // namespace kelvaro
