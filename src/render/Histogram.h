// How often each value occurs in a displayed picture, per channel and for luminance. A plain
// record and the pure function that counts; any thread.
#pragma once

#include "develop/Pipeline.h"
#include "platform/Bitmap.h"

#include <array>
#include <cstdint>

namespace kelvaro {

struct Histogram {
    using Bins = std::array<std::uint32_t, 256>; // by 8-bit display value
    // Luminance is weighted in linear light and counted at its display value, so that grey pixels
    // count in the same bin everywhere.
    Bins red{}, green{}, blue{}, luminance{};
    std::uint64_t pixels = 0;
    // Shares 0 … 1 of the pixels with any channel at 255, and with all channels at 0.
    double clippedHighlights = 0, clippedShadows = 0;

    bool operator==(const Histogram&) const = default;
};

// Of 8-bit pixels with 3 or 4 channels in `space`; the alpha is not looked at. Of every
// `rowStep`-th row, where a glance will do.
Histogram histogramOf(const Bitmap& pixels, Pipeline::OutputSpace space, int rowStep = 1);

} // namespace kelvaro
