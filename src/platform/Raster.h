// Planar 32-bit float pixels in the working space: linear light, Rec. 709 primaries, extended
// range, alpha premultiplied. Rows are stored top-down, aligned and padded so that vector code may
// work on whole groups of pixels past the last column. Moved, never copied by accident.
#pragma once

#include "base/Geometry.h"
#include "platform/PixelMemory.h"

#include <cstddef>
#include <memory>

namespace kelvaro {

inline constexpr int kPlanes = 4;    // red, green, blue, alpha
inline constexpr int kRowGroup = 64; // floats: every row starts and ends on a multiple of this

// A view of planar pixels somebody else owns. `planes[3]` is null where there is no alpha (opaque).
struct TileView {
    PixelRect rect;              // in image space; row 0 of the storage is the topmost
    float* planes[kPlanes] = {}; // first pixel of the topmost row
    std::ptrdiff_t stride = 0;   // floats from one row to the next

    float* row(int plane, int rowFromTop) const { return planes[plane] + stride * rowFromTop; }
    bool hasAlpha() const { return planes[3] != nullptr; }
};

struct ConstTileView {
    PixelRect rect;
    const float* planes[kPlanes] = {};
    std::ptrdiff_t stride = 0;

    ConstTileView() = default;
    ConstTileView(const TileView& view)
        : rect(view.rect),
          planes{view.planes[0], view.planes[1], view.planes[2], view.planes[3]},
          stride(view.stride) {}
    const float* row(int plane, int rowFromTop) const {
        return planes[plane] + stride * rowFromTop;
    }
    bool hasAlpha() const { return planes[3] != nullptr; }
};

// Uninitialised float memory, aligned to 64 bytes.
class AlignedFloats {
public:
    AlignedFloats() = default;
    explicit AlignedFloats(std::size_t count); // throws std::bad_alloc
    float* data() const { return reinterpret_cast<float*>(memory_.get()); }
    std::size_t size() const { return memory_ ? size_ : 0; }

private:
    std::size_t size_ = 0;
    PixelMemory memory_;
};

class Raster {
public:
    Raster() = default;
    // Uninitialised pixels over `extent`. Throws std::bad_alloc.
    Raster(PixelRect extent, bool hasAlpha);
    Raster(Raster&&) = default;
    Raster& operator=(Raster&&) = default;

    const PixelRect& extent() const { return extent_; }
    bool hasAlpha() const { return hasAlpha_; }
    bool isEmpty() const { return extent_.isEmpty(); }
    std::size_t bytes() const { return pixels_.size() * sizeof(float); }

    TileView view();
    ConstTileView view() const;
    // Row `rowFromTop` of one plane.
    float* row(int plane, int rowFromTop) { return view().row(plane, rowFromTop); }
    const float* row(int plane, int rowFromTop) const { return view().row(plane, rowFromTop); }

    Raster clone() const; // the deliberate copy

private:
    PixelRect extent_;
    bool hasAlpha_ = false;
    std::ptrdiff_t stride_ = 0;
    AlignedFloats pixels_;
};

} // namespace kelvaro
