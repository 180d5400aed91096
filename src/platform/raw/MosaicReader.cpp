#include "platform/raw/MosaicReader.h"

#include "platform/raw/QuadRows.h"

#include <cmath>
#include <numeric>

namespace kelvaro {

namespace {

int remainder(int value, int period) {
    const int r = value % period;
    return r < 0 ? r + period : r;
}

// The place inside first … first + length − 1 that mirrors `at`, without repeating the edge.
int mirrored(int at, int first, int length) {
    if (length == 1) return first;
    const int period = 2 * (length - 1);
    const int inside = remainder(at - first, period);
    return first + std::min(inside, period - inside);
}

// Whether the filters look the same on both sides of a row or a column.
bool mirrors(const ColourFilters& filters, int axis, bool isRow) {
    const int p = filters.period;
    for (int i = 1; i <= p; ++i) {
        for (int k = 0; k < p; ++k) {
            const int before = remainder(axis - i, p), after = (axis + i) % p;
            const bool isSame = isRow ? filters.at(before, k) == filters.at(after, k)
                                      : filters.at(k, before) == filters.at(k, after);
            if (!isSame) return false;
        }
    }
    return true;
}

// The row or column nearest to the edge, from `from` on in steps of `step`, about which the pattern
// may be mirrored; one far outside where there is none.
int axisNear(const SensorImage& sensor, int from, int step, bool isRow) {
    if (sensor.layout != SensorLayout::xTrans) return from;
    for (int i = 0; i < sensor.filters.period; ++i) {
        const int axis = from + i * step;
        if (axis >= 0 && mirrors(sensor.filters, axis, isRow)) return axis;
    }
    return from - step * (1 << 20);
}

} // namespace

MosaicReader::MosaicReader(const SensorImage& sensor) : sensor_(sensor) {
    const bool isMosaic =
        sensor.layout == SensorLayout::bayer || sensor.layout == SensorLayout::xTrans;
    const int channels = sensor.layout == SensorLayout::fullColour ? sensor.channels : 1;
    const auto& black = sensor.black;
    const SensorRect& active = sensor.active;
    rows_ = {active.top, active.height, axisNear(sensor, active.top, 1, true),
             axisNear(sensor, active.bottom() - 1, -1, true)};
    columns_ = {active.left, active.width, axisNear(sensor, active.left, 1, false),
                axisNear(sensor, active.right() - 1, -1, false)};
    tableRows_ = std::lcm(black.rows, isMosaic ? sensor.filters.period : 1);
    const auto size =
        std::size_t(channels) * std::size_t(tableRows_) * std::size_t(sensor.active.width);
    isSplittable_ = sensor.integers && sensor.channels == 1 && black.columns <= 2 &&
                    black.rowDeltas.empty() && black.columnDeltas.empty() &&
                    sensor.active.width >= 2;
    black_.reserve(size);
    scale_.reserve(size);
    BlackLevels table = black;
    table.rowDeltas.clear();
    BlackLevels even = table; // without what differs by column: it does not change the range
    even.columnDeltas.clear();
    for (int c = 0; c < channels; ++c) {
        for (int r = 0; r < tableRows_; ++r) {
            const int row = sensor.active.top + r;
            for (int x = 0; x < sensor.active.width; ++x) {
                const int column = sensor.active.left + x;
                const auto channel = std::size_t(isMosaic ? sensor.filters.at(row, column) : c);
                const float level = table.at(row, column, c);
                float balance = float(sensor.colour.balance[channel]);
                if (channel == 1 && sensor.greenRatio != 1) {
                    const bool isRedRow = sensor.filters.at(row, column + 1) == 0;
                    const float root = std::sqrt(sensor.greenRatio);
                    balance *= isRedRow ? 1 / root : root;
                }
                black_.push_back(level);
                scale_.push_back(balance / (sensor.white[channel] - even.at(row, column, c)));
            }
        }
    }
}

int MosaicReader::inside(int at, const Axis& axis) const {
    const int last = axis.first + axis.length - 1;
    if (at >= axis.first && at <= last) return at;
    const int other = 2 * (at < axis.first ? axis.mirrorFirst : axis.mirrorLast) - at;
    if (other >= axis.first && other <= last) return other;
    // Pictures smaller than what is asked for. Whole periods keep the larger pattern.
    const int period = sensor_.layout == SensorLayout::xTrans ? sensor_.filters.period : 2;
    if (period == 2 || axis.length < period) return mirrored(at, axis.first, axis.length);
    if (at < axis.first) return axis.first + remainder(at - axis.first, period);
    return last - remainder(last - at, period);
}

void MosaicReader::row(int row, int column, int count, int channel, float* out) const {
    const SensorRect& active = sensor_.active;
    const int y = inside(row, rows_);
    const int tableRow = channel * tableRows_ + remainder(y - active.top, tableRows_);
    const auto at = std::size_t(tableRow) * std::size_t(active.width);
    const float* black = black_.data() + at - active.left;
    const float* scale = scale_.data() + at - active.left;
    const auto& deltas = sensor_.black.rowDeltas;
    const int deltaRow = y - sensor_.black.originTop;
    const float delta = deltaRow >= 0 && std::size_t(deltaRow) < deltas.size()
                            ? deltas[std::size_t(deltaRow)]
                            : 0.0f;
    const auto values = [&](const auto* samples) {
        const auto* line = samples + y * sensor_.stride + channel;
        const auto value = [&](int x) {
            const auto sample = line[std::ptrdiff_t(x) * sensor_.channels];
            return (float(sample) - black[x] - delta) * scale[x];
        };
        // The straight part without mirroring is the common one.
        const int from = std::clamp(active.left - column, 0, count);
        const int to = std::clamp(active.right() - column, from, count);
        for (int i = 0; i < from; ++i)
            out[i] = value(inside(column + i, columns_));
        for (int i = from; i < to; ++i)
            out[i] = value(column + i);
        for (int i = to; i < count; ++i)
            out[i] = value(inside(column + i, columns_));
    };
    if (sensor_.integers) {
        values(sensor_.integers);
        return;
    }
    values(sensor_.floats);
    for (int i = 0; i < count; ++i) {
        if (!(std::abs(out[i]) < 1e6f)) out[i] = 0;
    }
}

void MosaicReader::split(int row, int column, int pairs, float* even, float* odd) const {
    const SensorRect& active = sensor_.active;
    if (!isSplittable_ || column < active.left || column + 2 * pairs > active.right()) {
        std::vector<float> line(std::size_t(2 * pairs));
        this->row(row, column, 2 * pairs, 0, line.data());
        for (int k = 0; k < pairs; ++k) {
            even[k] = line[std::size_t(2 * k)];
            odd[k] = line[std::size_t(2 * k + 1)];
        }
        return;
    }
    const int y = inside(row, rows_);
    const auto at = std::size_t(remainder(y - active.top, tableRows_)) * std::size_t(active.width) +
                    std::size_t(column - active.left);
    const PairLevels levels{{black_[at], black_[at + 1]}, {scale_[at], scale_[at + 1]}};
    levelPairs(sensor_.integers + y * sensor_.stride + column, levels, pairs, even, odd);
}

BayerPhase MosaicReader::phase() const {
    for (int i = 0; i < 4; ++i) {
        if (sensor_.filters.at(i / 2, i % 2) == 0) return {i / 2, i % 2};
    }
    return {};
}

} // namespace kelvaro
