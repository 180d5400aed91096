#include "recipe/NumberText.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <fmt/format.h>
#include <limits>

namespace kelvaro {
namespace {

constexpr long long largestExponent = 1'000'000'000; // beyond any length of text we hold

// The power of ten of the first significant digit of a decimal number, roughly: enough to tell an
// overflow from an underflow, which lie six hundred powers apart.
long long magnitude(std::string_view digits) {
    const std::size_t mark = digits.find_first_of("eE");
    const std::string_view mantissa = digits.substr(0, mark);
    long long exponent = 0;
    if (mark != std::string_view::npos) {
        const bool negative = digits[mark + 1] == '-';
        for (const char c : digits.substr(mark + 1)) {
            if (c < '0' || c > '9') continue;
            exponent = std::min(exponent * 10 + (c - '0'), largestExponent);
        }
        if (negative) exponent = -exponent;
    }
    const std::size_t first = mantissa.find_first_of("123456789");
    const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
    return exponent + static_cast<long long>(point) - static_cast<long long>(first);
}

} // namespace

std::string numberText(double value) {
    return fmt::format("{}", value);
}

std::optional<double> numberFromText(std::string_view text) {
    if (text.starts_with('+')) {
        text.remove_prefix(1);
        if (text.starts_with('-')) return std::nullopt;
    }
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error == std::errc::invalid_argument || end != text.data() + text.size()) {
        return std::nullopt;
    }
    if (error == std::errc::result_out_of_range) {
        value = magnitude(text) > 0 ? std::numeric_limits<double>::infinity() : 0;
        return text.starts_with('-') ? -value : value;
    }
    return value;
}

} // namespace kelvaro
