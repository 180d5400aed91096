#include "develop/ScalarField.h"

#include <algorithm>

namespace kelvaro {

namespace {

// The whole plane turned over its diagonal, in blocks that stay in the cache: columns become rows,
// so that every filter below walks along rows.
ScalarField transposed(const ScalarField& field) {
    constexpr int kBlock = 16;
    const int width = field.size().width, height = field.size().height;
    ScalarField out({height, width});
    for (int by = 0; by < height; by += kBlock)
        for (int bx = 0; bx < width; bx += kBlock)
            for (int y = by; y < std::min(by + kBlock, height); ++y)
                for (int x = bx; x < std::min(bx + kBlock, width); ++x)
                    out.row(x)[y] = field.row(y)[x];
    return out;
}

// Filters every row with `line(in, out, count)`, then every column.
template<class Line>
ScalarField separably(const ScalarField& field, Line line) {
    const auto alongRows = [&](const ScalarField& in) {
        ScalarField out(in.size());
        for (int y = 0; y < in.size().height; ++y)
            line(in.row(y), out.row(y), in.size().width);
        return out;
    };
    return transposed(alongRows(transposed(alongRows(field))));
}

// Shifted copies of the row are folded into the result one after another: loops without a branch.
template<class Pick>
ScalarField windowPick(const ScalarField& field, int radius, Pick pick) {
    return separably(field, [&](const double* in, double* out, int count) {
        std::copy_n(in, count, out);
        for (int shift = 1; shift <= std::min(radius, count - 1); ++shift) {
            for (int i = 0; i < count - shift; ++i)
                out[i] = pick(out[i], in[i + shift]);
            for (int i = shift; i < count; ++i)
                out[i] = pick(out[i], in[i - shift]);
        }
    });
}

} // namespace

ScalarField windowMinimum(const ScalarField& field, int radius) {
    return windowPick(field, radius, [](double a, double b) { return b < a ? b : a; });
}

ScalarField windowMaximum(const ScalarField& field, int radius) {
    return windowPick(field, radius, [](double a, double b) { return a < b ? b : a; });
}

ScalarField windowMean(const ScalarField& field, int radius) {
    return separably(field, [&](const double* in, double* out, int count) {
        const auto at = [&](int i) { return in[std::clamp(i, 0, count - 1)]; };
        const double share = 1.0 / (2 * radius + 1);
        double sum = 0;
        for (int i = -radius; i <= radius; ++i)
            sum += at(i);
        for (int i = 0; i < count; ++i) {
            out[i] = sum * share;
            sum += at(i + radius + 1) - at(i - radius);
        }
    });
}

} // namespace kelvaro
