// Numbers as text and back, independent of the locale.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace kelvaro {

// The shortest text that reads back to the same value; valid JSON for every finite value.
std::string numberText(double value);

// The whole text as one decimal number, with an optional sign: too large is infinite, too small is
// 0, "inf" and "nan" are what they say. None when the text is anything else.
std::optional<double> numberFromText(std::string_view text);

} // namespace kelvaro
