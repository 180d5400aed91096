// File names and paths inside JSON, which holds only UTF-8. A name that is UTF-8 stands as it is;
// of any other one each byte becomes a character of the same number, after a U+0000, which no name
// contains. Pure functions.
#pragma once

#include <string>
#include <string_view>

namespace kelvaro {

std::string textFromBytes(std::string_view bytes);
// The inverse; a text that `textFromBytes` can't have made gives its own bytes.
std::string bytesFromText(std::string_view text);

} // namespace kelvaro
