#include "develop/ScalarField.h"

#include <algorithm>

namespace kelvaro {

namespace {

// Filters every line along one axis: `line(in, out, count, stride)`.
template<class Line>
ScalarField alongAxis(const ScalarField& field, bool rows, Line line) {
    ScalarField out(field.size());
    const int width = field.size().width, height = field.size().height;
    const int lines = rows ? height : width, length = rows ? width : height;
    const std::ptrdiff_t step = rows ? 1 : width, next = rows ? width : 1;
    for (int i = 0; i < lines; ++i)
        line(field.values().data() + next * i, out.values().data() + next * i, length, step);
    return out;
}

template<class Pick>
ScalarField windowPick(const ScalarField& field, int radius, Pick pick) {
    const auto line = [&](const double* in, double* out, int count, std::ptrdiff_t step) {
        for (int i = 0; i < count; ++i) {
            double best = in[step * i];
            for (int j = std::max(0, i - radius); j <= std::min(count - 1, i + radius); ++j)
                best = pick(best, in[step * j]);
            out[step * i] = best;
        }
    };
    return alongAxis(alongAxis(field, true, line), false, line);
}

} // namespace

ScalarField windowMinimum(const ScalarField& field, int radius) {
    return windowPick(field, radius, [](double a, double b) { return std::min(a, b); });
}

ScalarField windowMaximum(const ScalarField& field, int radius) {
    return windowPick(field, radius, [](double a, double b) { return std::max(a, b); });
}

ScalarField windowMean(const ScalarField& field, int radius) {
    const auto line = [&](const double* in, double* out, int count, std::ptrdiff_t step) {
        const auto at = [&](int i) { return in[step * std::clamp(i, 0, count - 1)]; };
        double sum = 0;
        for (int i = -radius; i <= radius; ++i)
            sum += at(i);
        for (int i = 0; i < count; ++i) {
            out[step * i] = sum / (2 * radius + 1);
            sum += at(i + radius + 1) - at(i - radius);
        }
    };
    return alongAxis(alongAxis(field, true, line), false, line);
}

} // namespace kelvaro
