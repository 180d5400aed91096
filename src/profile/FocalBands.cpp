#include "profile/FocalBands.h"

#include <cmath>
#include <limits>

namespace kelvaro {

const std::array<FocalBand, FocalBands::count>& FocalBands::all() {
    static constexpr std::array<FocalBand, count> bands{{
        {0, 20, "Ultra-wide explorer", "at 20 mm or wider"},
        {21, 35, "Street & travel eye", "between 21 and 35 mm"},
        {36, 60, "Natural-perspective purist", "between 36 and 60 mm"},
        {61, 135, "Portrait-length framer", "between 61 and 135 mm"},
        {136, std::numeric_limits<int>::max(), "Telephoto hunter", "longer than 135 mm"},
    }};
    return bands;
}

std::size_t FocalBands::indexOf(double focalMm) {
    const double whole = std::floor(focalMm + 0.5);
    std::size_t index = 0;
    while (index + 1 < count && whole > all()[index].longestMm)
        ++index;
    return index;
}

} // namespace kelvaro
