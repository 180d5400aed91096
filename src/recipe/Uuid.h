// A 128-bit identifier as a plain value (RFC 4122), and its text form of 36 characters.
#pragma once

#include "platform/Random.h"

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelvaro {

struct Uuid {
    std::array<std::uint8_t, 16> bytes{};

    auto operator<=>(const Uuid&) const = default;
};

// A new identifier of version 4 (random).
Uuid randomUuid(RandomSource& random);

// Upper-case hexadecimal digits in groups of 8-4-4-4-12.
std::string toText(const Uuid& uuid);

// Digits of either case in exactly that grouping; none for any other text.
std::optional<Uuid> uuidFromText(std::string_view text);

} // namespace kelvaro
