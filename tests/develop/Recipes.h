// Recipes that the tests and benches of the pipeline share.
#pragma once

#include "recipe/AdjustmentCatalogue.h"
#include "recipe/Adjustments.h"
#include "recipe/MaskControls.h"

#include <random>

namespace kelvaro::test {

inline MaskComponent shape(MaskComponent::Kind kind, MaskPoint start, MaskPoint end) {
    MaskComponent component;
    component.kind = kind;
    component.start = start;
    component.end = end;
    return component;
}

inline MaskComponent brush(std::vector<MaskPoint> points) {
    MaskComponent component = shape(MaskComponent::Kind::brush, {}, {});
    component.id.bytes[0] = 2;
    component.strokes.push_back({std::move(points), 0.1, 60, 90, false});
    return component;
}

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
    using Kind = MaskComponent::Kind;
    mask.components = {shape(Kind::linear, {0, 0.1}, {0.8, 0.5}),
                       shape(Kind::radial, {0.5, 0.3}, {0.6, 0.4}),
                       brush({{0.2, 0.2}, {0.7, 0.4}})};
    mask.components[1].mode = MaskComponent::Mode::intersect;
    mask.components[1].angle = 30;
    mask.components[2].mode = MaskComponent::Mode::subtract;
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

// Recipes with about half of the controls set, anywhere in their ranges, and some masks.
class RandomRecipes {
public:
    explicit RandomRecipes(unsigned seed) : random_(seed) {}

    Adjustments next() {
        Adjustments edit;
        for (const AdjustmentSpec& spec : storedKeyCatalogue())
            if (chance(0.5)) spec.setValue(edit, number(spec.range.lower, spec.range.upper));
        edit.blackAndWhite = chance(0.1);
        for (const auto edge : {&Adjustments::cropLeft, &Adjustments::cropRight,
                                &Adjustments::cropTop, &Adjustments::cropBottom})
            edit.*edge *= 0.4; // most of the picture stays
        for (int masks = int(number(0, 3)); masks > 0; --masks)
            edit.masks.push_back(mask());
        return edit;
    }

private:
    bool chance(double share) { return number(0, 1) < share; }
    double number(double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random_);
    }
    MaskPoint point() { return {number(-0.2, 1.2), number(-0.2, 1.2)}; }

    LocalMask mask() {
        LocalMask mask;
        mask.invert = chance(0.3);
        mask.amount = number(1, 100);
        for (const MaskControl& control : maskControlCatalogue())
            if (chance(0.5))
                mask.*control.field = number(control.spec.range.lower, control.spec.range.upper);
        for (int shapes = int(number(1, 4)); shapes > 0; --shapes) {
            const auto kind = MaskComponent::Kind(int(number(0, 3)));
            MaskComponent component = kind == MaskComponent::Kind::brush
                                          ? brush({point(), point(), point()})
                                          : shape(kind, point(), point());
            component.id.bytes[1] = std::uint8_t(random_());
            component.mode = MaskComponent::Mode(int(number(0, 3)));
            component.invert = chance(0.3);
            component.angle = number(-180, 180);
            component.feather = number(0, 100);
            mask.components.push_back(sanitised(std::move(component)));
        }
        return mask;
    }

    std::mt19937 random_;
};

} // namespace kelvaro::test
