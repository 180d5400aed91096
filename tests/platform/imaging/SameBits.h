// Whether two rasters hold the same pixels bit for bit, whatever lies in the padding of their rows.
#pragma once

#include "platform/Raster.h"

#include <cstring>

namespace kelvaro::test {

inline bool sameBits(const Raster& a, const Raster& b) {
    if (!(a.extent() == b.extent()) || a.hasAlpha() != b.hasAlpha()) return false;
    for (int plane = 0; plane < (a.hasAlpha() ? 4 : 3); ++plane)
        for (int row = 0; row < a.extent().height; ++row)
            if (std::memcmp(a.row(plane, row), b.row(plane, row),
                            sizeof(float) * std::size_t(a.extent().width)) != 0)
                return false;
    return true;
}

} // namespace kelvaro::test
