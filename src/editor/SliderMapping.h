// From the hand to a value: where a value lies on a slider's row, and how dragging, the wheel, keys
// and typing change it. Positions are shares of the row's width, 0 … 1. Plain values, pure
// functions.
#pragma once

#include "recipe/AdjustmentSpec.h"

#include <optional>
#include <string_view>

namespace kelvaro {

double sliderPosition(const AdjustmentRange& range, double value);
double sliderValue(const AdjustmentRange& range, double position);

// The value's step for arrow keys, Page keys and the wheel: a hundredth or a tenth of what a number
// in the row counts (1 of 100, 0.05 stops); a tenth of that with ⌥.
double sliderStep(const AdjustmentSpec& spec, bool fine);
// `steps` up (or down, negative) from the next multiple of a step, clamped; 0 is never stepped
// over.
double stepped(const AdjustmentSpec& spec, double value, double steps, bool fine);

// "+0.3", "−20", "1,5 EV" as the value, clamped; none when it is no number.
std::optional<double> typedValue(const AdjustmentSpec& spec, std::string_view text);

// One drag along a row. Passing through 0 holds it there for a stretch of the way; with ⌥ the value
// follows a tenth as fast.
class SliderDrag {
public:
    static constexpr double catchPoints = 6; // the way that is held at 0
    static constexpr double fineFactor = 0.1;

    // The row's width is in points. The drag begins where the value stands: no jump.
    SliderDrag(const AdjustmentRange& range, double value, double widthPoints, double pointerX);
    // The value at the pointer.
    double movedTo(double pointerX, bool fine);

private:
    double caught() const;

    AdjustmentRange range_;
    double valuePerPoint_;
    double pointerX_;
    double position_; // on the way: the row with the catch at 0 let in
    double catch_;    // its length in value units; 0 where the range ends at 0
};

} // namespace kelvaro
