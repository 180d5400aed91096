// Lossless JPEG whose samples fill a picture in vertical slices, one after the other: how some
// makers store the whole sensor in one stream.
#pragma once

#include "base/Cancellation.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace kelvaro {

struct SlicedPicture {
    int width = 0, height = 0;
    // How many slices there are before the last one, their width, and that of the last; all 0: rows
    // as they are.
    std::array<int, 3> slices{};
    std::uint16_t* samples = nullptr; // row by row, without gaps
};

// False when the data are damaged, break off, do not fill the picture, use what decodeLosslessJpeg
// does not know, or when cancelled; some of the picture is then overwritten.
bool decodeSlicedJpeg(std::span<const std::byte> data, const SlicedPicture& picture,
                      const Cancellation* cancellation);

} // namespace kelvaro
