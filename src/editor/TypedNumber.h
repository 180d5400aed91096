// Numbers as people type them into a field: a decimal point or comma, a real minus sign, blanks, a
// unit behind.
#pragma once

#include <optional>
#include <string_view>

namespace kelvaro {

// None when the text is no finite number. `unit` may stand behind it, in either case.
std::optional<double> typedNumber(std::string_view text, std::string_view unit);

} // namespace kelvaro
