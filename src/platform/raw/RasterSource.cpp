#include "platform/raw/RasterSource.h"

#include <algorithm>

namespace kelvaro {

void RasterSource::read(const TileView& tile) const {
    const ConstTileView from = raster_.view();
    for (int row = 0; row < tile.rect.height; ++row) {
        const int y = from.rect.top() - tile.rect.top() + row;
        for (int plane = 0; plane < (hasAlpha() ? kPlanes : 3); ++plane) {
            std::copy_n(from.row(plane, y) + (tile.rect.x - from.rect.x), tile.rect.width,
                        tile.row(plane, row));
        }
    }
}

} // namespace kelvaro
