#include "platform/Raster.h"

#include "base/Require.h"

#include <cstring>

namespace kelvaro {

AlignedFloats::AlignedFloats(std::size_t count)
    : size_(count), memory_(count == 0 ? nullptr : allocatePixels(count * sizeof(float))) {}

Raster::Raster(PixelRect extent, bool hasAlpha) : extent_(extent), hasAlpha_(hasAlpha) {
    KELVARO_REQUIRE(extent.width >= 0 && extent.height >= 0);
    stride_ = (std::ptrdiff_t(extent.width) + kRowGroup - 1) / kRowGroup * kRowGroup;
    const std::size_t plane = std::size_t(stride_) * std::size_t(extent.height);
    // One group of slack: vector code may look one vector past the last row.
    if (plane > 0) pixels_ = AlignedFloats(plane * (hasAlpha ? 4 : 3) + kRowGroup);
}

TileView Raster::view() {
    TileView view{extent_, {}, stride_};
    const std::ptrdiff_t plane = stride_ * extent_.height;
    for (int i = 0; i < (hasAlpha_ ? 4 : 3); ++i)
        view.planes[i] = pixels_.data() + plane * i;
    return view;
}

ConstTileView Raster::view() const {
    return const_cast<Raster*>(this)->view();
}

Raster Raster::clone() const {
    Raster copy(extent_, hasAlpha_);
    if (bytes() > 0) std::memcpy(copy.pixels_.data(), pixels_.data(), bytes());
    return copy;
}

} // namespace kelvaro
