#include "platform/raw/MosaicGains.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

int mirrored(int at, int length) {
    if (length == 1) return 0;
    const int period = 2 * (length - 1);
    const int inside = ((at % period) + period) % period;
    return std::min(inside, period - inside);
}

} // namespace

PlaceGains::PlaceGains(const SensorImage& sensor, const Gains& gains)
    : active_(sensor.active), gains_(gains) {
    for (const GainMap& map : gains.maps) {
        std::vector<GridColumn> columns(std::size_t(active_.width));
        for (int x = 0; x < active_.width; ++x) {
            const int fromLeft = x - map.area.left;
            if (fromLeft < 0 || x >= map.area.right() || fromLeft % map.columnPitch != 0) continue;
            const double at = map.column((x + 0.5) / active_.width);
            columns[std::size_t(x)] = {int(at), float(at - int(at))};
        }
        columns_.push_back(std::move(columns));
    }
}

float PlaceGains::radial(const RadialGain& gain, int y, int x) const {
    const double cy = gain.centreRow * active_.height, cx = gain.centreColumn * active_.width;
    const double farY = std::max(cy, active_.height - cy), farX = std::max(cx, active_.width - cx);
    const double dy = y + 0.5 - cy, dx = x + 0.5 - cx;
    const double r2 = (dy * dy + dx * dx) / (farY * farY + farX * farX);
    double sum = 0;
    for (std::size_t i = gain.k.size(); i-- > 0;)
        sum = (sum + gain.k[i]) * r2;
    return float(std::max(0.0, 1 + sum));
}

void PlaceGains::multiplyMosaic(int row, int column, int pairs, float* even, float* odd) const {
    const int y = mirrored(row - active_.top, active_.height);
    for (std::size_t m = 0; m < columns_.size(); ++m) {
        const GainMap& map = gains_.maps[m];
        const int fromTop = y - map.area.top;
        if (map.plane != 0) continue;
        if (fromTop < 0 || y >= map.area.bottom() || fromTop % map.rowPitch != 0) continue;
        // The grid at this row; one more column, so that the last one has a right neighbour.
        std::vector<float> gains(std::size_t(map.columns) + 1);
        map.row((y + 0.5) / active_.height, gains.data());
        gains.back() = gains[gains.size() - 2];
        for (int i = 0; i < 2 * pairs; ++i) {
            const int x = column + i - active_.left;
            const bool isInside = x >= 0 && x < active_.width;
            const GridColumn& at =
                columns_[m][std::size_t(isInside ? x : mirrored(x, active_.width))];
            if (at.index < 0) continue;
            const float* gain = gains.data() + at.index;
            (i & 1 ? odd : even)[i / 2] *= gain[0] + at.fraction * (gain[1] - gain[0]);
        }
    }
    for (const RadialGain& gain : gains_.radial) {
        for (int i = 0; i < 2 * pairs; ++i) {
            const int x = mirrored(column + i - active_.left, active_.width);
            (i & 1 ? odd : even)[i / 2] *= radial(gain, y, x);
        }
    }
}

void PlaceGains::multiply(int row, int column, int step, int count, int channel,
                          float* values) const {
    const int y = mirrored(row, active_.height);
    for (std::size_t m = 0; m < columns_.size(); ++m) {
        const GainMap& map = gains_.maps[m];
        const bool isMeant = channel >= map.plane && channel < map.plane + map.planes;
        if (!isMeant || map.rowPitch != 1 || map.columnPitch != 1) continue;
        if (y < map.area.top || y >= map.area.bottom()) continue;
        std::vector<float> gains(std::size_t(map.columns) + 1);
        map.row((y + 0.5) / active_.height, gains.data());
        gains.back() = gains[gains.size() - 2];
        for (int i = 0; i < count; ++i) {
            const int x = mirrored(column + i * step, active_.width);
            const GridColumn& at = columns_[m][std::size_t(x)];
            if (at.index < 0) continue;
            const float* gain = gains.data() + at.index;
            values[i] *= gain[0] + at.fraction * (gain[1] - gain[0]);
        }
    }
    for (const RadialGain& gain : gains_.radial) {
        for (int i = 0; i < count; ++i)
            values[i] *= radial(gain, y, mirrored(column + i * step, active_.width));
    }
}

} // namespace kelvaro
