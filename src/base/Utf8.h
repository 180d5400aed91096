// Texts from outside that may not be the UTF-8 they should be.
#pragma once

#include <string>
#include <string_view>

namespace kelvaro {

// As RFC 3629 has it: no overlong forms, no surrogates, nothing above U+10FFFF.
bool isUtf8(std::string_view text);

// The text with each byte that is not part of valid UTF-8 replaced by U+FFFD.
std::string asUtf8(std::string_view text);

} // namespace kelvaro
