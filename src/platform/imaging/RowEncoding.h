// Finished pixels of one row as a file or a screen stores them. Compiled for every instruction set
// and chosen at run time; rows are padded like those of a Raster.
#pragma once

#include "platform/Renderer.h"

#include <cstddef>

namespace kelvaro::rows {

// Primaries, clipping, transfer curve and rounding of one row; `planes[3]` may be null (opaque).
// Writes `count` pixels of 3 or 4 interleaved samples. The sRGB curve is a polynomial in the fourth
// root, within 6e-7 of the definition.
void encode(const float* const planes[4], std::size_t count, const BitmapFormat& format,
            bool withAlpha, std::byte* out);

} // namespace kelvaro::rows
