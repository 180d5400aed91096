// Counts compared as fractions and percentages, in whole numbers, so that a limit that is met
// exactly counts as met.
#pragma once

#include <cstdint>
#include <string>

namespace kelvaro {

// A part of a whole; both are counts, and the part is at most the whole.
struct Share {
    std::int64_t part = 0, whole = 0;

    bool isAtLeast(int percent) const { return whole > 0 && 100 * part >= percent * whole; }
    bool isAtMost(int percent) const { return whole > 0 && 100 * part <= percent * whole; }
    double fraction() const {
        return whole > 0 ? static_cast<double>(part) / static_cast<double>(whole) : 0;
    }
    // "42%", rounded to the nearest, halves up; "0%" of nothing.
    std::string percentText() const;
    // The share as so many of ten, at least 1; 10 only when the part is the whole.
    std::int64_t ofTen() const;
};

// numerator / denominator rounded to the nearest, halves up; both at least 0, the denominator not
// 0.
std::int64_t roundedQuotient(std::int64_t numerator, std::int64_t denominator);

} // namespace kelvaro
