#include "editor/TypedNumber.h"

#include "recipe/NumberText.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace kelvaro {
namespace {

char lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() &&
           std::ranges::equal(text.substr(text.size() - end.size()), end,
                              [](char a, char b) { return lower(a) == lower(b); });
}

} // namespace

std::optional<double> typedNumber(std::string_view text, std::string_view unit) {
    std::string number;
    for (std::size_t i = 0; i < text.size(); ++i) {
        constexpr std::string_view minus = "−";
        if (text.substr(i).starts_with(minus)) {
            number += '-';
            i += minus.size() - 1;
        } else if (text[i] != ' ' && text[i] != '\t') {
            number += text[i] == ',' ? '.' : text[i];
        }
    }
    if (!unit.empty() && endsWith(number, unit)) number.resize(number.size() - unit.size());
    const auto value = numberFromText(number);
    if (!value || !std::isfinite(*value)) return std::nullopt;
    return value;
}

} // namespace kelvaro
