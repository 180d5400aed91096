#include "profile/Shares.h"

#include <algorithm>
#include <fmt/format.h>

namespace kelvaro {

std::int64_t roundedQuotient(std::int64_t numerator, std::int64_t denominator) {
    return (2 * numerator + denominator) / (2 * denominator);
}

std::string Share::percentText() const {
    return fmt::format("{}%", whole > 0 ? roundedQuotient(100 * part, whole) : 0);
}

std::int64_t Share::ofTen() const {
    if (part >= whole) return 10;
    return std::clamp<std::int64_t>(roundedQuotient(10 * part, whole), 1, 9);
}

} // namespace kelvaro
