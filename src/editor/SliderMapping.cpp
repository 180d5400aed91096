#include "editor/SliderMapping.h"

#include "editor/TypedNumber.h"

#include <cmath>

namespace kelvaro {

double sliderPosition(const AdjustmentRange& range, double value) {
    const double length = range.upper - range.lower;
    return length > 0 ? (range.clamped(value) - range.lower) / length : 0;
}

double sliderValue(const AdjustmentRange& range, double position) {
    if (!(position > 0)) return range.lower;
    return range.clamped(range.lower + std::min(position, 1.0) * (range.upper - range.lower));
}

double sliderStep(const AdjustmentSpec& spec, bool fine) {
    double step = 1;
    if (spec.format == AdjustmentSpec::Format::ev) step = 0.05;
    if (spec.format == AdjustmentSpec::Format::toggle) return 1;
    return fine ? step / 10 : step;
}

double stepped(const AdjustmentSpec& spec, double value, double steps, bool fine) {
    const double step = sliderStep(spec, fine);
    // From where the value stands to a multiple first: 3.4 goes up to 4 and down to 3.
    const double at = value / step, whole = std::round(at);
    double next = std::abs(at - whole) < 1e-6 ? whole + steps
                  : steps > 0                 ? std::floor(at) + steps
                                              : std::ceil(at) + steps;
    next *= step;
    if ((value < 0 && next > 0) || (value > 0 && next < 0)) next = 0;
    return spec.range.clamped(next) + 0.0; // never −0
}

std::optional<double> typedValue(const AdjustmentSpec& spec, std::string_view text) {
    const auto value = typedNumber(text, spec.format == AdjustmentSpec::Format::ev ? "EV" : "");
    if (!value) return std::nullopt;
    return spec.range.clamped(*value);
}

SliderDrag::SliderDrag(const AdjustmentRange& range, double value, double widthPoints,
                       double pointerX)
    : range_(range),
      valuePerPoint_((range.upper - range.lower) / std::max(widthPoints, 1.0)),
      pointerX_(pointerX),
      position_(range.clamped(value)),
      catch_(range.lower < 0 && range.upper > 0 ? catchPoints * valuePerPoint_ : 0) {
    if (position_ > 0) position_ += catch_ / 2;
    if (position_ < 0) position_ -= catch_ / 2;
}

double SliderDrag::movedTo(double pointerX, bool fine) {
    const double way = (pointerX - pointerX_) * valuePerPoint_ * (fine ? fineFactor : 1);
    pointerX_ = pointerX;
    if (!std::isfinite(way)) return caught();
    // No further than the ends, so that the value turns back as soon as the hand does.
    position_ = std::clamp(position_ + way, range_.lower - catch_ / 2, range_.upper + catch_ / 2);
    return caught();
}

double SliderDrag::caught() const {
    const double half = catch_ / 2;
    if (std::abs(position_) <= half) return range_.clamped(0);
    return range_.clamped(position_ > 0 ? position_ - half : position_ + half);
}

} // namespace kelvaro
