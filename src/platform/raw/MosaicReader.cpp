#include "platform/raw/MosaicReader.h"

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

// The place inside that shows what lies beyond the edge, through the same filter: mirrored where
// the pattern repeats after two photosites, moved by whole periods where it is larger.
int inside(int at, int first, int length, int period) {
    if (period == 2 || length < period) return mirrored(at, first, length);
    if (at < first) return first + remainder(at - first, period);
    const int last = first + length - 1;
    return at > last ? last - remainder(last - at, period) : at;
}

} // namespace

MosaicReader::MosaicReader(const SensorImage& sensor) : sensor_(sensor) {
    const bool isMosaic =
        sensor.layout == SensorLayout::bayer || sensor.layout == SensorLayout::xTrans;
    const int channels = sensor.layout == SensorLayout::fullColour ? sensor.channels : 1;
    const auto& black = sensor.black;
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

void MosaicReader::row(int row, int column, int count, int channel, float* out) const {
    const SensorRect& active = sensor_.active;
    const int period = sensor_.layout == SensorLayout::xTrans ? 6 : 2;
    const int y = inside(row, active.top, active.height, period);
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
            out[i] = value(inside(column + i, active.left, active.width, period));
        for (int i = from; i < to; ++i)
            out[i] = value(column + i);
        for (int i = to; i < count; ++i)
            out[i] = value(inside(column + i, active.left, active.width, period));
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
    const int y = inside(row, active.top, active.height, 2);
    const auto at = std::size_t(remainder(y - active.top, tableRows_)) * std::size_t(active.width) +
                    std::size_t(column - active.left);
    const float blackEven = black_[at], blackOdd = black_[at + 1];
    const float scaleEven = scale_[at], scaleOdd = scale_[at + 1];
    const std::uint16_t* line = sensor_.integers + y * sensor_.stride + column;
    for (int k = 0; k < pairs; ++k) {
        even[k] = (float(line[2 * k]) - blackEven) * scaleEven;
        odd[k] = (float(line[2 * k + 1]) - blackOdd) * scaleOdd;
    }
}

BayerPhase MosaicReader::phase() const {
    for (int i = 0; i < 4; ++i) {
        if (sensor_.filters.at(i / 2, i % 2) == 0) return {i / 2, i % 2};
    }
    return {};
}

} // namespace kelvaro
