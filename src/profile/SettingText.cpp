#include "profile/SettingText.h"

#include <fmt/format.h>

namespace kelvaro {

std::string apertureText(double aperture) {
    std::string number = fmt::format("{:.{}f}", aperture, aperture < 1 ? 2 : 1);
    while (number.ends_with('0'))
        number.pop_back();
    if (number.ends_with('.')) number.pop_back();
    return "ƒ/" + number;
}

} // namespace kelvaro
