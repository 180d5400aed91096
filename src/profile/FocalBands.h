// The five bands of focal lengths that photographers think in.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace kelvaro {

struct FocalBand {
    int widestMm = 0; // the first and the last whole millimetre of the band
    int longestMm = 0;
    std::string_view title, phrase;
};

class FocalBands {
public:
    static constexpr std::size_t count = 5;
    static const std::array<FocalBand, count>& all();
    // Index of the band that holds `focalMm` (above 0), rounded to whole millimetres.
    static std::size_t indexOf(double focalMm);
};

} // namespace kelvaro
