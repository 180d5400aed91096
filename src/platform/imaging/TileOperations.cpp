#include "platform/imaging/TileOperations.h"

#include "base/Require.h"
#include "platform/ImageSpace.h"
#include "platform/imaging/Resampling.h"
#include "platform/imaging/RowOperations.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <tuple>
#include <type_traits>
#include <utility>

namespace kelvaro {

namespace {

int planeCount(const TileView& view) {
    return view.hasAlpha() ? 4 : 3;
}

// Those of `width` outputs from `first` on, counted from the input's column `origin`. Vector code
// reads whole groups: the padding repeats the last position.
LinearTaps partOf(const LinearTaps& taps, int first, std::size_t width, int origin) {
    const std::size_t padded = (width + kRowGroup - 1) / kRowGroup * kRowGroup;
    LinearTaps part;
    part.index.reserve(padded);
    for (std::size_t i = 0; i < width; ++i)
        part.index.push_back(taps.index[std::size_t(first) + i] - origin);
    part.fraction.assign(taps.fraction.begin() + first,
                         taps.fraction.begin() + first + std::ptrdiff_t(width));
    part.index.resize(padded, part.index.back());
    part.fraction.resize(padded, part.fraction.back());
    return part;
}

} // namespace

void stretchTile(const StretchTables& tables, int planes, const ConstTileView& in,
                 const TileView& out, TilePool& pool) {
    KELVARO_REQUIRE(tables.output.contains(out.rect));
    const std::size_t width = std::size_t(out.rect.width), inWidth = std::size_t(in.rect.width);
    const LinearTaps columns =
        partOf(tables.columns, out.rect.x - tables.output.x, width, in.rect.x);
    int used[kPlanes], count = 0;
    for (int plane = 0; plane < planes; ++plane)
        used[count++] = plane;
    if (out.hasAlpha()) used[count++] = 3;
    // Each line of the input is stretched once; the lines of the output lie between two of them.
    const Tile line(pool, {0, 0, in.rect.width + 1, kPlanes}, false);
    const Tile stretched(pool, {0, 0, out.rect.width, 2 * kPlanes}, false);
    const auto stretchedRow = [&](int inputLine, int i) {
        return stretched.view().row(0, inputLine % 2 * kPlanes + i);
    };
    int held[2] = {-1, -1};
    const auto hold = [&](int inputLine) {
        if (std::exchange(held[inputLine % 2], inputLine) == inputLine) return;
        float *from[kPlanes], *to[kPlanes];
        for (int i = 0; i < count; ++i) {
            from[i] = line.view().row(0, i);
            to[i] = stretchedRow(inputLine, i);
            std::memcpy(from[i], in.row(used[i], rowOfLine(in.rect, in.rect.y + inputLine)),
                        inWidth * sizeof(float));
            from[i][inWidth] = from[i][inWidth - 1]; // right neighbour of a one-pixel input
        }
        rows::interpolate(to, from, count, columns.index.data(), columns.fraction.data(), width);
    };
    for (int outLine = 0; outLine < out.rect.height; ++outLine) {
        const auto at = std::size_t(out.rect.y + outLine - tables.output.y);
        const int lower = tables.lines.index[at] - in.rect.y;
        const int upper = std::min(lower + 1, in.rect.height - 1);
        hold(lower);
        hold(upper);
        const int target = rowOfLine(out.rect, out.rect.y + outLine);
        for (int i = 0; i < count; ++i)
            rows::mix(out.row(used[i], target), stretchedRow(lower, i), stretchedRow(upper, i),
                      tables.lines.fraction[at], width);
    }
}

namespace {

// The input pixels around one output pixel, with weights that sum to 1.
struct Neighbourhood {
    int taps = 0;
    int columns[6], rows[6]; // inside the stored tile
    float columnWeights[6], rowWeights[6];
};

void fillAxis(Sampling sampling, double position, int first, int end, int taps, int* index,
              float* weights) {
    const int begin = static_cast<int>(std::floor(position - 0.5)) - samplingRadius(sampling) + 1;
    double values[6], total = 0;
    for (int k = 0; k < taps; ++k) {
        values[k] = samplingWeight(sampling, begin + k + 0.5 - position);
        total += values[k];
        index[k] = std::clamp(begin + k, first, end - 1);
    }
    for (int k = 0; k < taps; ++k)
        weights[k] = static_cast<float>(values[k] / total);
}

Neighbourhood neighbourhoodOf(const AffineOperation& op, const PixelRect& extent,
                              const PixelRect& stored, double x, double y) {
    const auto clampedTo = [](double v, int low, int high) {
        return std::clamp(v, low - 8.0, high + 8.0); // far outside, the edge is all there is
    };
    const double u =
        clampedTo(op.inverse.a * x + op.inverse.c * y + op.inverse.tx, extent.x, extent.right());
    const double v =
        clampedTo(op.inverse.b * x + op.inverse.d * y + op.inverse.ty, extent.y, extent.top());
    Neighbourhood around;
    around.taps = 2 * samplingRadius(op.sampling);
    fillAxis(op.sampling, u, extent.x, extent.right(), around.taps, around.columns,
             around.columnWeights);
    int lines[6];
    fillAxis(op.sampling, v, extent.y, extent.top(), around.taps, lines, around.rowWeights);
    for (int k = 0; k < around.taps; ++k) {
        around.columns[k] -= stored.x;
        around.rows[k] = rowOfLine(stored, lines[k]);
    }
    return around;
}

float weightedSum(const Neighbourhood& around, const ConstTileView& in, int plane) {
    float sum = 0;
    for (int j = 0; j < around.taps; ++j) {
        const float* row = in.row(plane, around.rows[j]);
        float line = 0;
        for (int i = 0; i < around.taps; ++i)
            line += row[around.columns[i]] * around.columnWeights[i];
        sum += line * around.rowWeights[j];
    }
    return sum;
}

void affinePixels(const AffineOperation& op, const PixelRect& extent, const ConstTileView& in,
                  const TileView& out, int row, int first, int end) {
    const double y = centreOfRow(out.rect, row);
    for (int column = first; column < end; ++column) {
        const Neighbourhood around =
            neighbourhoodOf(op, extent, in.rect, out.rect.x + column + 0.5, y);
        for (int plane = 0; plane < planeCount(out); ++plane)
            out.row(plane, row)[column] = weightedSum(around, in, plane);
    }
}

// Columns and lines of the input, in centres of pixels, along one row of the output. Lines are
// counted downwards, as they are stored.
rows::CubicLine lineOf(const AffineOperation& op, const PixelRect& stored, double x, double y) {
    const AffineTransform& t = op.inverse;
    return {x,         t.c * y + t.tx - 0.5, t.a, -(t.d * y + t.ty) - 0.5, -t.b,
            -stored.x, stored.top(),         0};
}

bool cubicInside(const rows::CubicLine& line, const PixelRect& stored, int pixel) {
    const double x = line.x + pixel;
    const double column = std::floor(x * line.du + line.u) + line.originColumn;
    const double row = std::floor(x * line.dv + line.v) + line.originRow;
    return column >= 1 && column + 2 < stored.width && row >= 1 && row + 2 < stored.height;
}

// The pixels whose neighbourhoods lie inside: one stretch, because a line enters a rectangle once.
// Looked for from some pixel that is inside.
std::pair<int, int> stretchInside(const rows::CubicLine& line, const PixelRect& stored, int width) {
    int seed = 0;
    while (seed < width && !cubicInside(line, stored, seed))
        ++seed;
    const auto firstOutside = [&](int inside, int outside) { // by bisection, either way
        while (std::abs(outside - inside) > 1) {
            const int middle = (inside + outside) / 2;
            (cubicInside(line, stored, middle) ? inside : outside) = middle;
        }
        return outside;
    };
    if (seed == width) return {0, 0};
    return {seed, cubicInside(line, stored, width - 1) ? width : firstOutside(seed, width - 1)};
}

} // namespace

// Row by row: the stretch whose neighbourhoods lie inside runs as vectors, the pixels near an edge
// one by one.
void affineTile(const AffineOperation& op, const PixelRect& extent, const ConstTileView& in,
                const TileView& out) {
    for (int row = 0; row < out.rect.height; ++row) {
        int begin = 0, end = 0;
        if (op.sampling == Sampling::catmullRom) {
            rows::CubicLine line =
                lineOf(op, in.rect, out.rect.x + 0.5, centreOfRow(out.rect, row));
            std::tie(begin, end) = stretchInside(line, in.rect, out.rect.width);
            float* to[kPlanes] = {};
            for (int plane = 0; plane < planeCount(out); ++plane)
                to[plane] = out.row(plane, row) + begin;
            line.x += begin;
            line.count = std::size_t(end - begin);
            rows::cubic(to, in.planes, planeCount(out), in.stride, line);
        }
        affinePixels(op, extent, in, out, row, 0, begin);
        affinePixels(op, extent, in, out, row, end, out.rect.width);
    }
}

namespace {

// One row of window sums, two planes at a time so that neither waits for its own last sum.
void blurRows(const double* const columns[2], float* const to[2], int planes, int window,
              double scale, int width) {
    double sums[2] = {};
    for (int p = 0; p < planes; ++p)
        for (int i = 0; i < window - 1; ++i)
            sums[p] += columns[p][i];
    const auto along = [&](auto count) {
        for (int i = 0; i < width; ++i)
            for (int p = 0; p < count(); ++p) {
                sums[p] += columns[p][i + window - 1];
                to[p][i] = static_cast<float>(sums[p] * scale);
                sums[p] -= columns[p][i];
            }
    };
    planes == 2 ? along(std::integral_constant<int, 2>()) : along(std::integral_constant<int, 1>());
}

} // namespace

// Running sums in double: down the columns, then along each row.
void boxBlurTile(int radius, int planes, const ConstTileView& in, const TileView& out) {
    const int window = 2 * radius + 1;
    const std::size_t width = std::size_t(in.rect.width);
    const double scale = 1.0 / (double(window) * window);
    int used[kPlanes], count = 0;
    for (int plane = 0; plane < planeCount(out); ++plane)
        if (plane < planes || plane == 3) used[count++] = plane;
    std::vector<double> sums(2 * width);
    double* const columns[2] = {sums.data(), sums.data() + width};
    for (int first = 0; first < count; first += 2) {
        const int pair = std::min(2, count - first);
        std::fill(sums.begin(), sums.end(), 0.0);
        for (int row = 0; row < in.rect.height; ++row) {
            float* to[2] = {};
            for (int p = 0; p < pair; ++p) {
                const int plane = used[first + p];
                const float* entering = in.row(plane, row);
                for (std::size_t i = 0; i < width; ++i)
                    columns[p][i] += double(entering[i]);
                if (row >= window) {
                    const float* leaving = in.row(plane, row - window);
                    for (std::size_t i = 0; i < width; ++i)
                        columns[p][i] -= double(leaving[i]);
                }
                if (row >= window - 1) to[p] = out.row(plane, row - window + 1);
            }
            if (row >= window - 1) blurRows(columns, to, pair, window, scale, out.rect.width);
        }
    }
}

void clampTile(const ConstTileView& in, const TileView& out) {
    const int left = std::clamp(in.rect.x - out.rect.x, 0, out.rect.width);
    const int right = std::clamp(in.rect.right() - out.rect.x, 0, out.rect.width);
    for (int plane = 0; plane < planeCount(out); ++plane) {
        for (int row = 0; row < out.rect.height; ++row) {
            const int line = std::clamp(lineOfRow(out.rect, row), in.rect.y, in.rect.top() - 1);
            const float* from = in.row(plane, rowOfLine(in.rect, line));
            float* to = out.row(plane, row);
            std::fill_n(to, left, from[0]);
            if (right > left)
                std::memcpy(to + left, from + (out.rect.x + left - in.rect.x),
                            std::size_t(right - left) * sizeof(float));
            std::fill_n(to + std::max(left, right), out.rect.width - std::max(left, right),
                        from[in.rect.width - 1]);
        }
    }
}

} // namespace kelvaro
