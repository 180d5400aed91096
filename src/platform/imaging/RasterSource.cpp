#include "platform/imaging/RasterSource.h"

#include "platform/imaging/ImageSpace.h"

#include <cstring>

namespace kelvaro {

void RasterSource::read(const TileView& tile) const {
    const ConstTileView from = raster_.view();
    const int firstRow = rowOfLine(from.rect, lineOfRow(tile.rect, 0));
    const int firstColumn = tile.rect.x - from.rect.x;
    for (int plane = 0; plane < (from.hasAlpha() ? 4 : 3); ++plane)
        for (int row = 0; row < tile.rect.height; ++row)
            std::memcpy(tile.row(plane, row), from.row(plane, firstRow + row) + firstColumn,
                        std::size_t(tile.rect.width) * sizeof(float));
}

} // namespace kelvaro
