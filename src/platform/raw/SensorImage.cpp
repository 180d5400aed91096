#include "platform/raw/SensorImage.h"

#include <cmath>

namespace kelvaro {

namespace {

int remainder(int value, int period) {
    const int r = value % period;
    return r < 0 ? r + period : r;
}

float deltaAt(const std::vector<float>& deltas, int index) {
    return index >= 0 && std::size_t(index) < deltas.size() ? deltas[std::size_t(index)] : 0.0f;
}

} // namespace

SquaringScales squaringScales(double aspect) {
    constexpr double kLongest = 2.5, kSquare = 0.005;
    if (!(aspect > 1 / kLongest && aspect < kLongest) || std::abs(aspect - 1) < kSquare) return {};
    return aspect > 1 ? SquaringScales{1, aspect} : SquaringScales{1 / aspect, 1};
}

float BlackLevels::at(int row, int column, int channel) const {
    const int r = row - originTop, c = column - originLeft;
    const int cell = remainder(r, rows) * columns + remainder(c, columns);
    const auto i = std::size_t(cell * channels + std::min(channel, channels - 1));
    return table[i] + deltaAt(rowDeltas, r) + deltaAt(columnDeltas, c);
}

} // namespace kelvaro
