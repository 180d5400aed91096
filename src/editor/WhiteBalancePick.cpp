#include "editor/WhiteBalancePick.h"

#include "base/Require.h"
#include "platform/WhiteAdaptation.h"
#include "recipe/AdjustmentCatalogue.h"
#include "recipe/Kelvin.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {
namespace {

constexpr double mostClippedShare = 0.02;
constexpr double leastLight = 0.002;   // scene-linear; below it there is more noise than colour
constexpr double neutralSpread = 1e-3; // between channels, of their mean

double mean(const std::array<double, 3>& rgb) {
    return (rgb[0] + rgb[1] + rgb[2]) / 3;
}

double spread(const std::array<double, 3>& rgb) {
    const auto [low, high] = std::minmax({rgb[0], rgb[1], rgb[2]});
    return (high - low) / mean(rgb);
}

std::array<double, 3> balanced(const std::array<double, 3>& rgb, WhitePoint neutral,
                               WhitePoint target) {
    const Matrix3 m = whiteAdaptationMatrix(neutral, target);
    std::array<double, 3> out{};
    for (std::size_t i = 0; i < 3; ++i)
        out[i] = m[i][0] * rgb[0] + m[i][1] * rgb[1] + m[i][2] * rgb[2];
    return out;
}

// The control whose value makes `imbalance` 0: it rises with the control, monotonically.
template<class F>
double solved(AdjustmentRange range, F imbalance) {
    double low = range.lower, high = range.upper;
    for (int step = 0; step < 50; ++step) {
        const double middle = (low + high) / 2;
        (imbalance(middle) < 0 ? low : high) = middle;
    }
    return (low + high) / 2;
}

const AdjustmentRange& rangeOf(std::string_view id) {
    const AdjustmentSpec* spec = findStoredKey(id);
    KELVARO_REQUIRE(spec != nullptr);
    return spec->range;
}

} // namespace

PickSample pickSample(const ConstTileView& area, double clipLevel) {
    PickSample sample;
    double clipped = 0, count = 0;
    for (int y = 0; y < area.rect.height; ++y) {
        for (int x = 0; x < area.rect.width; ++x) {
            bool isClipped = false;
            for (int plane = 0; plane < 3; ++plane) {
                const double value = area.row(plane, y)[x];
                sample.rgb[std::size_t(plane)] += value;
                isClipped = isClipped || !(value < clipLevel);
            }
            clipped += isClipped;
            ++count;
        }
    }
    if (count == 0) return sample;
    for (double& channel : sample.rgb)
        channel /= count;
    sample.clippedShare = clipped / count;
    return sample;
}

std::optional<PickedBalance> pickedBalance(const PickSample& sample, WhitePoint asShot,
                                           PickRefusal* refusal) {
    const auto refused = [&](PickRefusal why) -> std::optional<PickedBalance> {
        if (refusal) *refusal = why;
        return std::nullopt;
    };
    if (sample.clippedShare > mostClippedShare) return refused(PickRefusal::clipped);
    if (!(mean(sample.rgb) > leastLight)) return refused(PickRefusal::tooDark);
    if (spread(sample.rgb) < neutralSpread) return refused(PickRefusal::asShot);

    const bool known = asShot.kelvin > 0 && std::isfinite(asShot.kelvin);
    const double kelvin = known ? asShot.kelvin : 6500;
    const double asShotTint = std::isfinite(asShot.tint) ? asShot.tint : 0;
    const WhitePoint target{kelvinFromShift(kelvin, 0), asShotTint};
    const auto after = [&](double temperature, double tint) {
        return balanced(sample.rgb, {kelvinFromShift(kelvin, temperature), asShotTint + tint},
                        target);
    };
    // Warmer raises red over blue, more tint lowers green below both: one inside the other.
    const auto tintAt = [&](double temperature) {
        return solved(rangeOf("tint"), [&](double tint) {
            const auto rgb = after(temperature, tint);
            return (rgb[0] + rgb[2]) / 2 - rgb[1];
        });
    };
    PickedBalance picked;
    picked.temperature = solved(rangeOf("temperature"), [&](double temperature) {
        const auto rgb = after(temperature, tintAt(temperature));
        return rgb[0] - rgb[2];
    });
    picked.tint = tintAt(picked.temperature);
    picked.isLimited = spread(after(picked.temperature, picked.tint)) > 10 * neutralSpread;
    return picked;
}

std::string_view text(PickRefusal refusal) {
    switch (refusal) {
    case PickRefusal::clipped:
        return "This area is clipped. Pick one that is grey and not too bright.";
    case PickRefusal::tooDark:
        return "This area is too dark. Pick one that is grey and has some light.";
    case PickRefusal::asShot:
        return "This area is neutral as shot.";
    }
    return {};
}

} // namespace kelvaro
