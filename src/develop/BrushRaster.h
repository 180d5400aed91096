// The shared cache of rasterised brush shapes, one raster per component of a mask. A shape whose
// strokes are unchanged is the same image again; one that grew is painted on from where it stopped.
// The least recently used raster goes first. Thread-safe.
#pragma once

#include "base/Locked.h"
#include "develop/BrushPainting.h"
#include "platform/Image.h"

#include <memory>
#include <vector>

namespace kelvaro {

class BrushRaster {
public:
    // `capacity` rasters (about 3 MB each for a photo of 3:2) are kept, at least 1.
    explicit BrushRaster(std::size_t capacity = 24);

    // The strokes of a brush component as grey weights 0 … 1 in raster pixels, origin (0, 0).
    Image image(const MaskComponent& brush, PixelSize size);

    // Forgets everything, for when memory is short. Images already handed out stay valid.
    void clear();
    std::size_t count() const { return state_.copy().entries.size(); }

private:
    struct Entry {
        Uuid component;
        std::shared_ptr<const BrushPainter> painter;
        Image image;
        std::uint64_t lastUse = 0;
    };
    struct State {
        std::vector<Entry> entries;
        std::uint64_t clock = 0;
    };
    Entry find(const MaskComponent& brush, PixelSize size);
    void keep(Entry entry);

    std::size_t capacity_;
    Locked<State> state_;
};

} // namespace kelvaro
