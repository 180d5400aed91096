// Folding the hash of one more field into a record's hash.
#pragma once

#include <cstddef>
#include <functional>

namespace kelvaro {

// Multiplies by 2^64 divided by the golden ratio, so that the order of the fields matters.
inline std::size_t foldHash(std::size_t seed, std::size_t next) {
    return (seed ^ next) * 0x9E3779B97F4A7C15u + (seed >> 7);
}

template<class T>
std::size_t foldValue(std::size_t seed, const T& value) {
    return foldHash(seed, std::hash<T>{}(value));
}

} // namespace kelvaro
