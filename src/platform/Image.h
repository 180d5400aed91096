// The lazy image graph: an Image is a handle to an immutable node that says how its pixels would be
// made. Nothing is computed until a Renderer draws a rectangle of it. Handles are cheap to copy and
// may be used from any thread.
//
// All images live in image space (base/Geometry.h) and in the working space: linear light, Rec. 709
// primaries, extended range, premultiplied alpha. Outside its extent an image is transparent black.
#pragma once

#include "base/Geometry.h"
#include "platform/Bitmap.h"
#include "platform/Kernel.h"
#include "platform/Raster.h"

#include <array>
#include <memory>
#include <vector>

namespace kelvaro {

struct ImageNode;

// Pixels that exist outside the graph: a decoded file, a finished raster, a RAW mosaic.
class PixelSource {
public:
    virtual ~PixelSource() = default;
    virtual PixelRect extent() const = 0;
    virtual bool hasAlpha() const = 0;
    virtual std::size_t bytes() const = 0; // memory that it holds
    // Fills `tile`, whose rectangle lies inside extent(). Values are finite. Called from several
    // threads at once. tile.planes[3] is non-null exactly when hasAlpha().
    virtual void read(const TileView& tile) const = 0;
    // All pixels where they stand, for sources that hold them as a raster does; no planes
    // otherwise. They stay there as long as the source.
    virtual ConstTileView standing() const { return {}; }
    // Whether pixels are made where they are read, in parts that are taller than what one reads.
    virtual bool isMadeInParts() const { return false; }
};

class Image {
public:
    Image() = default; // no image
    explicit Image(std::shared_ptr<const ImageNode> node) : node_(std::move(node)) {}

    explicit operator bool() const { return node_ != nullptr; }
    // Infinite images (see clampedToExtent) answer with kInfiniteExtent.
    const PixelRect& extent() const;
    bool hasAlpha() const;
    const ImageNode& node() const { return *node_; }
    const std::shared_ptr<const ImageNode>& handle() const { return node_; }
    // Identity: the same node, not the same pixels.
    bool operator==(const Image& other) const { return node_ == other.node_; }

private:
    std::shared_ptr<const ImageNode> node_;
};

inline constexpr PixelRect kInfiniteExtent{-(1 << 28), -(1 << 28), 1 << 29, 1 << 29};

enum class Sampling { bilinear, catmullRom, lanczos3 };

// x' = a x + c y + tx, y' = b x + d y + ty
struct AffineTransform {
    double a = 1, b = 0, c = 0, d = 1, tx = 0, ty = 0;
    bool operator==(const AffineTransform&) const = default;
};

Image imageFrom(std::shared_ptr<const PixelSource> source);
Image imageFrom(Raster raster);
// A decoded file at origin (0, 0). The samples stay as they are (8-bit files take 3 bytes a pixel)
// and become linear light tile by tile.
std::shared_ptr<const PixelSource> sourceFrom(Bitmap pixels, ColourDecoding colour);
std::shared_ptr<const PixelSource> sourceFrom(Raster raster);
Image constantColour(std::array<float, 4> premultiplied); // infinite

// Runs a point-wise kernel. The result has the first input's extent and alpha; the other inputs are
// sampled at the same coordinate. `uniforms` are in the kernel's order and count.
Image applyKernel(const Kernel& kernel, std::vector<Image> inputs, std::vector<double> uniforms);
// A kernel without inputs, which makes its pixels from their position alone; opaque.
Image generated(const Kernel& kernel, std::vector<double> uniforms, const PixelRect& extent);

// The point-wise built-ins. Each returns its input itself when it would change nothing.
Image exposureAdjusted(const Image& image, double stops);
struct WhitePoint {
    double kelvin = 6500, tint = 0;
};
// Chromatic adaptation (Bradford) that makes a surface which looked white under `neutral` look as
// it would under `target`: light recorded under `neutral` becomes light under `target`.
Image temperatureAndTint(const Image& image, WhitePoint neutral, WhitePoint target);
// Rows of a 3 × 3 matrix on the colour channels; alpha is kept.
using Matrix3 = std::array<std::array<double, 3>, 3>;
Image colourMatrix(const Image& image, const Matrix3& rows);

// Lanczos-3, widened by 1/scale when reducing, edges clamped. The extent's edges are scaled and
// rounded to whole pixels, at least 1 × 1.
Image lanczosScaled(const Image& image, double scale);
// The same, to a given size (the two scales may then differ by rounding). Origin becomes (0, 0).
Image lanczosResized(const Image& image, PixelSize size);
// Mean over a window of 2 radius + 1 in both directions; the extent grows by radius. Clamp the
// input to its extent first, and crop back afterwards, for edges that repeat.
Image boxBlurred(const Image& image, int radius);
// Edge pixels repeat without end.
Image clampedToExtent(const Image& image);
Image cropped(const Image& image, const PixelRect& rect);
Image translated(const Image& image, int dx, int dy);
// Maps the image's coordinates through `transform`; `extent` is the result's. Edges clamped.
Image affine(const Image& image, const AffineTransform& transform, const PixelRect& extent,
             Sampling sampling);
// Stretches the whole image over `extent`, bilinear between pixel centres, edges clamped: how the
// small analysis images are seen at full size.
Image stretched(const Image& image, const PixelRect& extent);
// Source-over of premultiplied images, and the larger value per channel; over both extents.
Image compositedOver(const Image& top, const Image& bottom);
Image maximum(const Image& a, const Image& b);

} // namespace kelvaro
