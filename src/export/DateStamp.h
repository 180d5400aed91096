// The imprint of the day on which a photo was taken, in its lower right corner, in gold like a film
// camera's. Pure functions, any thread.
#pragma once

#include "platform/Image.h"

#include <array>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>

namespace kelvaro {

class DateStamp {
public:
    enum class Style { none, dayMonthYear, monthDayYear };
    static constexpr std::array styles{Style::none, Style::dayMonthYear, Style::monthDayYear};
    static std::string_view rawValue(Style style);
    static std::optional<Style> style(std::string_view rawValue);

    // "07.03.24" or "03.07.24"; empty for `none`.
    static std::string text(Style style, std::chrono::year_month_day day);

    static constexpr std::array<double, 3> colour{0.969, 0.627, 0.149}; // sRGB
    static constexpr double opacity = 0.95;

    // How large the digits are on a photo and how far the stamp stays from its edges, in pixels;
    // none for photos too small to carry one.
    struct Geometry {
        double digitHeight = 0, margin = 0;
    };
    static std::optional<Geometry> geometry(PixelSize photo);

    // The photo with the text on it; the photo itself where it is too small or the text empty.
    static Image imprinted(const Image& photo, const std::string& text);
};

} // namespace kelvaro
