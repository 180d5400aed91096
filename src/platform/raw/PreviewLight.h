// Single pixels of a decoded preview as linear Rec. 709.
#pragma once

#include "platform/ImageFiles.h"

#include <array>

namespace kelvaro {

std::array<float, 3> lightAt(const DecodedBitmap& preview, int x, int y);

inline float luminanceOf(const std::array<float, 3>& rgb) {
    return 0.2126f * rgb[0] + 0.7152f * rgb[1] + 0.0722f * rgb[2];
}

} // namespace kelvaro
