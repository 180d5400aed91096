// What a colour profile or a code for primaries is called.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>

namespace kelvaro {

// The description in an ICC profile; none for bytes that are none.
std::optional<std::string> profileName(std::span<const std::byte> profile);
// The colour primaries of ITU-T H.273 ("Display P3" for 12).
std::optional<std::string> primariesName(int code);

} // namespace kelvaro
