// Recipes that the tests of the pipeline share.
#pragma once

#include "recipe/Adjustments.h"

namespace kelvaro::test {

// One mask of all three kinds of shape with every control set.
inline LocalMask everyShapeMask() {
    LocalMask mask;
    mask.id.bytes[0] = 1;
    mask.amount = 80;
    mask.exposure = 0.7;
    mask.temperature = 30;
    mask.tint = -20;
    mask.contrast = 25;
    mask.highlights = -30;
    mask.shadows = 40;
    mask.clarity = 35;
    mask.saturation = 20;
    MaskComponent linear;
    linear.kind = MaskComponent::Kind::linear;
    linear.start = {0, 0.1};
    linear.end = {0.8, 0.5};
    MaskComponent radial;
    radial.kind = MaskComponent::Kind::radial;
    radial.mode = MaskComponent::Mode::intersect;
    radial.start = {0.5, 0.3};
    radial.end = {0.6, 0.4};
    radial.angle = 30;
    MaskComponent brush;
    brush.id.bytes[0] = 2;
    brush.mode = MaskComponent::Mode::subtract;
    brush.strokes.push_back({{{0.2, 0.2}, {0.7, 0.4}}, 0.1, 60, 90, false});
    mask.components = {linear, radial, brush};
    return mask;
}

// Every stage of the pipeline at work.
inline Adjustments everything() {
    Adjustments edit;
    edit.temperature = 25;
    edit.tint = 10;
    edit.blackAndWhite = 1;
    edit.exposure = 0.5;
    edit.highlights = -40;
    edit.shadows = 60;
    edit.brightness = 10;
    edit.contrast = 30;
    edit.white = 20;
    edit.black = -15;
    edit.hue = 15;
    edit.saturation = 20;
    edit.vibrance = 30;
    edit.sharpness = 10;
    edit.clarity = 40;
    edit.dehaze = 35;
    edit.vignette = -40;
    edit.grain = 30;
    edit.grainSize = 20;
    edit.cropLeft = 0.1;
    edit.straighten = 3;
    edit.masks = {everyShapeMask()};
    return edit;
}

// What people do to most photos.
inline Adjustments typical() {
    Adjustments edit;
    edit.exposure = 0.3;
    edit.contrast = 20;
    edit.highlights = -30;
    edit.shadows = 30;
    edit.clarity = 15;
    edit.vibrance = 20;
    return edit;
}

} // namespace kelvaro::test
