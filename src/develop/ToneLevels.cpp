#include "develop/ToneLevels.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace kelvaro {

namespace {

constexpr std::size_t kFewestPixels = 16;

double smoothstep(double from, double to, double x) {
    const double t = std::clamp((x - from) / (to - from), 0.0, 1.0);
    return t * t * (3 - 2 * t);
}

} // namespace

ToneLevels measuredLevels(const ConstTileView& sceneLinear) {
    std::vector<double> values; // luminances
    if (!sceneLinear.rect.isEmpty())
        values.reserve(std::size_t(sceneLinear.rect.width) * std::size_t(sceneLinear.rect.height));
    for (int y = 0; y < sceneLinear.rect.height; ++y) {
        const float* r = sceneLinear.row(0, y);
        const float* g = sceneLinear.row(1, y);
        const float* b = sceneLinear.row(2, y);
        for (int x = 0; x < sceneLinear.rect.width; ++x) {
            const double luminance =
                0.2126 * double(r[x]) + 0.7152 * double(g[x]) + 0.0722 * double(b[x]);
            if (std::isfinite(luminance) && luminance > 0) values.push_back(luminance);
        }
    }
    if (values.size() <= kFewestPixels) return {};
    // The logarithm keeps the order, and a partial order is enough for two of them.
    const std::size_t n = values.size();
    const auto low = values.begin() + std::ptrdiff_t(n / 100);
    const auto high = values.begin() + std::ptrdiff_t(n * 99 / 100);
    std::nth_element(values.begin(), high, values.end());
    std::nth_element(values.begin(), low, high);
    const auto stops = [](double luminance) { return std::log2(luminance / kMiddleGrey); };
    return {std::clamp(stops(*low), -10.0, -2.5), std::clamp(stops(*high), 0.5, 5.0)};
}

double regionalGainStops(double d, double shadows, double highlights) {
    const double lift = shadows > 1   ? 3.3 + 1.4 * (shadows - 1)
                        : shadows > 0 ? 3.3 * shadows
                                      : 1.5 * shadows;
    const double deep = 0.6 + 0.4 * smoothstep(-10.5, -7.5, d);
    const double shadow = (1 - smoothstep(-7, 0, d)) * deep * lift;
    return shadow + smoothstep(0, 4, d) * highlights * (highlights < 0 ? 1.75 : 0.8);
}

ToneEndpoints toneEndpoints(const ToneLevels& levels, double shiftStops, double shadows,
                            double highlights) {
    const double black = levels.lo + shiftStops, white = levels.hi + shiftStops;
    const double top = levels.hi - 1.5 <= 0.5 ? levels.hi - 1.5 : std::max(levels.hi - 3, 0.5);
    ToneEndpoints e{black + regionalGainStops(black, shadows, highlights),
                    white + regionalGainStops(white, shadows, highlights),
                    std::clamp(-1 - levels.lo, 1.5, 3.0), levels.hi - top};
    if (e.y - e.x < e.z + e.w) {
        const double middle = (e.x + e.y) / 2, half = (e.z + e.w) / 2;
        e.x = middle - half;
        e.y = middle + half;
    }
    return e;
}

} // namespace kelvaro
