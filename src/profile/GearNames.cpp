#include "profile/GearNames.h"

#include <algorithm>
#include <array>
#include <string>

namespace kelvaro {
namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// The place after the blanks that begin at `at`.
std::size_t afterBlanks(std::string_view text, std::size_t at) {
    while (at < text.size() && (text[at] == ' ' || (text[at] >= '\t' && text[at] <= '\r')))
        ++at;
    return at;
}

} // namespace

// Every range ends in blanks, a hyphen, blanks and a digit, and what stands before the first blank
// is a digit, whether or not a decimal part is there: so the digit before is all there is to find.
bool isZoomLens(std::string_view lens) {
    for (std::size_t i = 0; i < lens.size(); ++i) {
        if (!isDigit(lens[i])) continue;
        const std::size_t hyphen = afterBlanks(lens, i + 1);
        if (hyphen >= lens.size() || lens[hyphen] != '-') continue;
        const std::size_t next = afterBlanks(lens, hyphen + 1);
        if (next < lens.size() && isDigit(lens[next])) return true;
    }
    return false;
}

bool isPhone(std::string_view camera) {
    std::string lower(camera);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    constexpr std::array<std::string_view, 3> phones{"iphone", "pixel", "galaxy"};
    return std::any_of(phones.begin(), phones.end(), [&](std::string_view phone) {
        return lower.find(phone) != std::string::npos;
    });
}

} // namespace kelvaro
