// A decoded bitmap as a source of the image graph: integer samples are kept as stored and turned
// into linear light through their tone tables and matrix for each tile that is read.
#pragma once

#include "platform/Image.h"

namespace kelvaro {

class BitmapSource : public PixelSource {
public:
    BitmapSource(Bitmap pixels, ColourDecoding colour);
    PixelRect extent() const override;
    bool hasAlpha() const override { return pixels_.channels == 4; }
    std::size_t bytes() const override { return pixels_.bytes(); }
    void read(const TileView& tile) const override;

private:
    Bitmap pixels_;
    ColourDecoding colour_;
};

} // namespace kelvaro
