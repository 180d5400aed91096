// Memory for the samples of a whole sensor: uninitialised, so that the threads that decode the
// samples are the ones that touch it first.
#pragma once

#include "platform/PixelMemory.h"

#include <cstddef>
#include <cstdint>

namespace kelvaro {

class StoredSamples {
public:
    StoredSamples() = default;
    // Throws std::bad_alloc.
    explicit StoredSamples(std::size_t count)
        : memory_(allocatePixels(count * sizeof(std::uint16_t))), count_(count) {}
    std::uint16_t* data() const { return reinterpret_cast<std::uint16_t*>(memory_.get()); }
    std::size_t size() const { return count_; }
    bool isEmpty() const { return count_ == 0; }

private:
    PixelMemory memory_;
    std::size_t count_ = 0;
};

} // namespace kelvaro
