// The compressed pixels of a PNG file, made in bands of rows that know nothing of each other, so
// that all cores work on them: each band is filtered and deflated to a byte boundary, and the bands
// joined make one zlib stream (RFC 1950, 1951; W3C PNG, section 9).
#pragma once

#include "platform/Bitmap.h"

#include <cstddef>
#include <vector>

namespace kelvaro {

struct PngBand {
    std::vector<std::byte> deflated; // empty on failure
    std::uint32_t adler = 1;         // Adler-32 of the filtered rows
    std::size_t filteredBytes = 0;
};

int pngBandRows(const Bitmap& pixels);
// Rows firstRow … firstRow + rows of u8 or u16 pixels. Throws std::bad_alloc. Thread-safe.
PngBand deflateBand(const Bitmap& pixels, int firstRow, int rows);
// Adler-32 of two stretches of data, one after the other.
std::uint32_t joinedAdler(std::uint32_t before, const PngBand& band);

} // namespace kelvaro
