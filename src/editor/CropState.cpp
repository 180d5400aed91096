#include "editor/CropState.h"

#include <cmath>
#include <fmt/format.h>

namespace kelvaro {

std::string straightenText(double degrees) {
    // What rounds to nothing has no minus.
    const double shown = std::abs(degrees) < 0.05 ? 0 : degrees;
    return fmt::format("{:+.1f}°", shown);
}

std::string straightenedNotice(double degrees) {
    return "Straightened " + straightenText(degrees);
}

} // namespace kelvaro
