#include "develop/MaskShapes.h"

#include "base/Require.h"
#include "develop/BrushRaster.h"
#include "develop/kernels/Kernels.h"
#include "recipe/MaskControls.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvaro {

namespace {

Image finished(const Image& weight, bool invert, double amount) {
    if (!invert && amount == 1) return weight;
    return applyKernel(kernel::twMaskFinish(), {weight}, {invert ? 1.0 : 0.0, amount});
}

Image linearShape(const MaskComponent& shape, const PixelRect& photo) {
    const double d = photo.longerSide();
    return generated(kernel::twMaskLinear(),
                     {d * shape.start.x + photo.x, d * shape.start.y + photo.y,
                      d * shape.end.x + photo.x, d * shape.end.y + photo.y,
                      shape.invert ? 1.0 : 0.0},
                     photo);
}

Image radialShape(const MaskComponent& shape, const PixelRect& photo) {
    const double d = photo.longerSide();
    const double angle = shape.angle * std::numbers::pi / 180;
    return generated(kernel::twMaskRadial(),
                     {d * shape.start.x + photo.x, d * shape.start.y + photo.y, d * shape.end.x,
                      d * shape.end.y, std::cos(angle), std::sin(angle), shape.feather / 100,
                      shape.invert ? 1.0 : 0.0},
                     photo);
}

Image componentWeight(const MaskComponent& shape, const PixelRect& photo, BrushRaster& brushes) {
    switch (shape.kind) {
    case MaskComponent::Kind::linear:
        return linearShape(shape, photo);
    case MaskComponent::Kind::radial:
        return radialShape(shape, photo);
    case MaskComponent::Kind::brush:
        break;
    }
    const Image painted = brushes.image(shape, brushRasterSize(photo.size()));
    return finished(stretched(painted, photo), shape.invert, 1);
}

double modeNumber(MaskComponent::Mode mode) {
    switch (mode) {
    case MaskComponent::Mode::add:
        return 0;
    case MaskComponent::Mode::subtract:
        return 1;
    case MaskComponent::Mode::intersect:
        return 2;
    }
    return 0;
}

// The first shape is the start, whatever its mode.
Image combinedShape(const LocalMask& mask, const PixelRect& photo, BrushRaster& brushes) {
    KELVARO_REQUIRE(!mask.components.empty());
    Image weight = componentWeight(mask.components.front(), photo, brushes);
    for (std::size_t i = 1; i < mask.components.size(); ++i) {
        const MaskComponent& shape = mask.components[i];
        weight =
            applyKernel(kernel::twMaskCombine(), {weight, componentWeight(shape, photo, brushes)},
                        {modeNumber(shape.mode)});
    }
    return weight;
}

} // namespace

bool hasEffect(const LocalMask& mask) {
    const auto controls = maskControlCatalogue();
    return mask.enabled && mask.amount > 0 && !mask.components.empty() &&
           std::any_of(controls.begin(), controls.end(),
                       [&](const MaskControl& control) { return mask.*control.field != 0; });
}

Image maskWeight(const LocalMask& mask, const PixelRect& photo, BrushRaster& brushes) {
    return finished(combinedShape(mask, photo, brushes), mask.invert, mask.amount / 100);
}

Image overlayWeight(const std::vector<LocalMask>& masks, const MaskOverlay& overlay,
                    const PixelRect& photo, BrushRaster& brushes) {
    Image joined;
    for (const LocalMask& mask : masks) {
        const bool shown = overlay.mask == mask.id || (overlay.all && mask.enabled);
        if (!shown || mask.components.empty()) continue;
        const Image weight = finished(combinedShape(mask, photo, brushes), mask.invert, 1);
        joined = joined ? maximum(joined, weight) : weight;
    }
    return joined;
}

} // namespace kelvaro
