// What we ask of the system for identifiers: bytes that nobody can guess. Tests pass a seeded
// source.
#pragma once

#include <cstddef>
#include <span>

namespace kelvaro {

class RandomSource {
public:
    virtual ~RandomSource() = default;
    // Fills all of `bytes`; may be called from any thread.
    virtual void fill(std::span<std::byte> bytes) = 0;
};

} // namespace kelvaro
