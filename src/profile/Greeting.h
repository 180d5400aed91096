// The words that the profile page opens with.
#pragma once

#include "platform/LocalCalendar.h"

#include <span>
#include <string>
#include <string_view>

namespace kelvaro {

struct GreetingLine {
    std::string_view salutation, ending;
};

// The lines for an hour and day, in their order; never empty.
std::span<const GreetingLine> greetingLines(const CivilTime& now);

// Today's line: the same all day, another one the next. `name` may be empty.
std::string greeting(const CivilTime& now, std::string_view name);

// Asked once, the first time the page opens.
inline constexpr std::string_view kProfileNamePrompt =
    "What should Kelvaro call you? Pick an icon too.";

} // namespace kelvaro
