#include "platform/Image.h"

#include "base/Require.h"
#include "platform/ImageNode.h"
#include "platform/WhiteAdaptation.h"

#include <cmath>

namespace kelvaro {

namespace {

Image makeImage(Operation operation, std::vector<Image> inputs, PixelRect extent, bool hasAlpha) {
    return Image(std::make_shared<const ImageNode>(
        ImageNode{std::move(operation), std::move(inputs), extent, hasAlpha}));
}

bool isInfinite(const PixelRect& extent) {
    return extent == kInfiniteExtent;
}

int roundedPixel(double edge) {
    return static_cast<int>(std::floor(edge + 0.5));
}

// Edges scaled and rounded, at least one pixel.
PixelRect scaledExtent(const PixelRect& extent, double scale) {
    const int x = roundedPixel(extent.x * scale), y = roundedPixel(extent.y * scale);
    return {x, y, std::max(1, roundedPixel(extent.right() * scale) - x),
            std::max(1, roundedPixel(extent.top() * scale) - y)};
}

AffineTransform inverted(const AffineTransform& t) {
    const double determinant = t.a * t.d - t.b * t.c;
    KELVARO_REQUIRE(determinant != 0 && std::isfinite(determinant));
    AffineTransform inverse{
        t.d / determinant, -t.b / determinant, -t.c / determinant, t.a / determinant, 0, 0};
    inverse.tx = -(inverse.a * t.tx + inverse.c * t.ty);
    inverse.ty = -(inverse.b * t.tx + inverse.d * t.ty);
    return inverse;
}

} // namespace

const PixelRect& Image::extent() const {
    KELVARO_REQUIRE(node_);
    return node_->extent;
}

bool Image::hasAlpha() const {
    KELVARO_REQUIRE(node_);
    return node_->hasAlpha;
}

const char* operationName(const ImageNode& node) {
    if (const auto* kernel = std::get_if<KernelOperation>(&node.operation))
        return kernel->kernel->name;
    static constexpr const char* names[] = {
        "source", "constant",  "kernel", "colourMatrix", "lanczos", "boxBlur", "clamp",
        "crop",   "translate", "affine", "stretch",      "over",    "maximum"};
    static_assert(std::size(names) == std::variant_size_v<Operation>);
    return names[node.operation.index()];
}

Image imageFrom(std::shared_ptr<const PixelSource> source) {
    KELVARO_REQUIRE(source);
    const PixelRect extent = source->extent();
    const bool alpha = source->hasAlpha();
    return makeImage(SourceOperation{std::move(source)}, {}, extent, alpha);
}

Image imageFrom(Raster raster) {
    return imageFrom(sourceFrom(std::move(raster)));
}

Image constantColour(std::array<float, 4> premultiplied) {
    return makeImage(ConstantOperation{premultiplied}, {}, kInfiniteExtent, premultiplied[3] < 1);
}

Image applyKernel(const Kernel& kernel, std::vector<Image> inputs, std::vector<double> uniforms) {
    KELVARO_REQUIRE(kernel.inputs > 0 && int(inputs.size()) == kernel.inputs);
    KELVARO_REQUIRE(int(uniforms.size()) == kernel.uniforms);
    for (const Image& input : inputs)
        KELVARO_REQUIRE(input);
    const PixelRect extent = inputs.front().extent();
    const bool alpha = inputs.front().hasAlpha();
    return makeImage(KernelOperation{&kernel, std::move(uniforms)}, std::move(inputs), extent,
                     alpha);
}

Image generated(const Kernel& kernel, std::vector<double> uniforms, const PixelRect& extent) {
    KELVARO_REQUIRE(kernel.inputs == 0 && int(uniforms.size()) == kernel.uniforms);
    return makeImage(KernelOperation{&kernel, std::move(uniforms)}, {}, extent, false);
}

Image exposureAdjusted(const Image& image, double stops) {
    if (stops == 0) return image;
    const double gain = std::exp2(stops);
    return colourMatrix(image, {{{gain, 0, 0}, {0, gain, 0}, {0, 0, gain}}});
}

Image temperatureAndTint(const Image& image, WhitePoint neutral, WhitePoint target) {
    if (neutral.kelvin == target.kelvin && neutral.tint == target.tint) return image;
    return colourMatrix(image, whiteAdaptationMatrix(neutral, target));
}

Image colourMatrix(const Image& image, const Matrix3& rows) {
    static constexpr Matrix3 identity{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    if (rows == identity) return image;
    const auto* first = std::get_if<ColourMatrixOperation>(&image.node().operation);
    if (!first)
        return makeImage(ColourMatrixOperation{rows}, {image}, image.extent(), image.hasAlpha());
    Matrix3 both{}; // one matrix after another is one matrix
    for (std::size_t r = 0; r < 3; ++r)
        for (std::size_t c = 0; c < 3; ++c)
            for (std::size_t k = 0; k < 3; ++k)
                both[r][c] += rows[r][k] * first->rows[k][c];
    return colourMatrix(image.node().inputs[0], both);
}

Image lanczosScaled(const Image& image, double scale) {
    KELVARO_REQUIRE(scale > 0 && std::isfinite(scale) && !isInfinite(image.extent()));
    if (scale == 1) return image;
    const PixelRect extent = scaledExtent(image.extent(), scale);
    return makeImage(LanczosOperation{scale, scale, {0, 0}, {0, 0}}, {image}, extent,
                     image.hasAlpha());
}

Image lanczosResized(const Image& image, PixelSize size) {
    const PixelRect& from = image.extent();
    KELVARO_REQUIRE(size.width > 0 && size.height > 0 && !from.isEmpty() && !isInfinite(from));
    if (size == from.size())
        return from.x == 0 && from.y == 0 ? image : translated(image, -from.x, -from.y);
    const LanczosOperation operation{double(size.width) / from.width,
                                     double(size.height) / from.height,
                                     {double(from.x), double(from.y)},
                                     {0, 0}};
    return makeImage(operation, {image}, {0, 0, size.width, size.height}, image.hasAlpha());
}

Image boxBlurred(const Image& image, int radius) {
    KELVARO_REQUIRE(radius >= 0);
    if (radius == 0) return image;
    const bool infinite = isInfinite(image.extent());
    return makeImage(BoxBlurOperation{radius}, {image},
                     infinite ? image.extent() : outset(image.extent(), radius),
                     !infinite || image.hasAlpha());
}

Image clampedToExtent(const Image& image) {
    KELVARO_REQUIRE(!image.extent().isEmpty());
    if (isInfinite(image.extent())) return image;
    return makeImage(ClampOperation{}, {image}, kInfiniteExtent, image.hasAlpha());
}

Image cropped(const Image& image, const PixelRect& rect) {
    if (rect.contains(image.extent())) return image;
    return makeImage(CropOperation{}, {image}, intersection(image.extent(), rect),
                     image.hasAlpha());
}

Image translated(const Image& image, int dx, int dy) {
    if (dx == 0 && dy == 0) return image;
    PixelRect extent = image.extent();
    if (!isInfinite(extent)) {
        extent.x += dx;
        extent.y += dy;
    }
    return makeImage(TranslateOperation{dx, dy}, {image}, extent, image.hasAlpha());
}

Image affine(const Image& image, const AffineTransform& transform, const PixelRect& extent,
             Sampling sampling) {
    KELVARO_REQUIRE(!image.extent().isEmpty() && !isInfinite(image.extent()));
    return makeImage(AffineOperation{inverted(transform), sampling}, {image}, extent,
                     image.hasAlpha());
}

Image stretched(const Image& image, const PixelRect& extent) {
    KELVARO_REQUIRE(!image.extent().isEmpty() && !isInfinite(image.extent()));
    if (extent == image.extent()) return image;
    return makeImage(StretchOperation{}, {image}, extent, image.hasAlpha());
}

namespace {

// Two images laid over each other cover the bounding rectangle; where only one of them is, the
// other is transparent.
Image overlaid(Operation operation, const Image& a, const Image& b) {
    const bool opaque = a.extent() == b.extent() && !a.hasAlpha() && !b.hasAlpha();
    PixelRect extent = bounding(a.extent(), b.extent());
    if (isInfinite(a.extent()) || isInfinite(b.extent())) extent = kInfiniteExtent;
    return makeImage(std::move(operation), {a, b}, extent, !opaque);
}

} // namespace

Image compositedOver(const Image& top, const Image& bottom) {
    return overlaid(OverOperation{}, top, bottom);
}

Image maximum(const Image& a, const Image& b) {
    return overlaid(MaximumOperation{}, a, b);
}

} // namespace kelvaro
