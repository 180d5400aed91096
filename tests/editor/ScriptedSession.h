// A scripted edit, step by step, as a function of the step: what a killed session had and what is
// found afterwards can be compared whole.
#pragma once

#include "editor/MaskList.h"
#include "fakes/SeededRandom.h"

#include <cmath>

namespace kelvaro::test {

inline constexpr int lastScriptedStep = 9000;
inline constexpr int stepsPerStroke = 60;

// Step 0 is the unedited photo; later ones drag a slider and paint a mask. The step stands in
// `vibrance`, a hundredth each.
inline Adjustments scriptedEdit(int step) {
    Adjustments edit;
    if (step == 0) return edit;
    edit.vibrance = step / 100.0;
    edit.exposure = 4 * std::sin(step * 0.05);
    SeededRandom random(7);
    addMask(edit, MaskComponent::Kind::brush, {6000, 4000}, random);
    auto& strokes = edit.masks.front().components.front().strokes;
    for (int i = 0; i < step; ++i) {
        if (i % stepsPerStroke == 0) strokes.emplace_back();
        strokes.back().points.push_back({i % 97 / 100.0, i % 89 / 100.0});
    }
    return edit;
}

inline int scriptedStep(const Adjustments& edit) {
    return int(std::lround(edit.vibrance * 100));
}

} // namespace kelvaro::test
