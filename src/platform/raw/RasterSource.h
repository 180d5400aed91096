// A finished raster as a source of the image graph.
#pragma once

#include "platform/Image.h"

namespace kelvaro {

class RasterSource final : public PixelSource {
public:
    explicit RasterSource(Raster raster) : raster_(std::move(raster)) {}
    PixelRect extent() const override { return raster_.extent(); }
    bool hasAlpha() const override { return raster_.hasAlpha(); }
    std::size_t bytes() const override { return raster_.bytes(); }
    void read(const TileView& tile) const override;

private:
    Raster raster_;
};

} // namespace kelvaro
