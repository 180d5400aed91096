#include "develop/HazeModel.h"

#include "base/Require.h"
#include "develop/ScalarField.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

constexpr double kBrightestShare = 0.001;
constexpr double kBrightestGuide = 1.5; // as in the kernel
constexpr double kLeastAirlight = 0.000001;
constexpr double kHazeSaturation = 0.12; // what haze has by day
constexpr double kSaturationBeyond = 0.35;
constexpr double kRegularisation = 0.00002; // of the squared guide
constexpr int kFitRadii =
    8; // the fit's window against the patch: wider than the glow it would leave

int patchRadius(PixelSize size) {
    return int(0.025 * 0.5 * std::max(size.width, size.height));
}

// Haze is scattered daylight and nearly grey, but what is bright in every channel may be a cream
// wall or a lamp. Taken as it is, its colour would turn skies and shadows into the opposite one, so
// of the saturation beyond haze's own only a part is believed; that part leaves sunsets their
// warmth. The largest channel stays.
std::array<double, 3> believable(std::array<double, 3> air) {
    const auto [low, high] = std::minmax({air[0], air[1], air[2]});
    if (!(high > 0)) return air;
    const double saturation = 1 - std::max(low, 0.0) / high;
    if (!(saturation > kHazeSaturation)) return air;
    const double kept =
        (kHazeSaturation + (saturation - kHazeSaturation) * kSaturationBeyond) / saturation;
    for (double& channel : air)
        channel = high - (high - channel) * kept;
    return air;
}

// Calls use(index, channel values, not below 0) for every pixel.
template<class Use>
void forEachPixel(const ConstTileView& image, Use use) {
    std::size_t index = 0;
    for (int y = 0; y < image.rect.height; ++y) {
        const float* rows[3] = {image.row(0, y), image.row(1, y), image.row(2, y)};
        for (int x = 0; x < image.rect.width; ++x, ++index)
            use(index, std::array<double, 3>{std::max(0.0, double(rows[0][x])),
                                             std::max(0.0, double(rows[1][x])),
                                             std::max(0.0, double(rows[2][x]))});
    }
}

ScalarField product(const ScalarField& a, const ScalarField& b) {
    ScalarField out(a.size());
    for (std::size_t i = 0; i < out.count(); ++i)
        out[i] = a[i] * b[i];
    return out;
}

struct LinearFit {
    ScalarField slope, offset;
};

// The guided filter's local linear models of `target` over `guide`, averaged over their windows.
LinearFit guidedFit(const ScalarField& guide, const ScalarField& target, int radius) {
    const ScalarField meanGuide = windowMean(guide, radius);
    const ScalarField meanTarget = windowMean(target, radius);
    const ScalarField meanSquare = windowMean(product(guide, guide), radius);
    const ScalarField meanProduct = windowMean(product(guide, target), radius);
    LinearFit fit{ScalarField(guide.size()), ScalarField(guide.size())};
    for (std::size_t i = 0; i < guide.count(); ++i) {
        const double variance = std::max(0.0, meanSquare[i] - meanGuide[i] * meanGuide[i]);
        const double covariance = meanProduct[i] - meanGuide[i] * meanTarget[i];
        fit.slope[i] = covariance / (variance + kRegularisation);
        fit.offset[i] = meanTarget[i] - fit.slope[i] * meanGuide[i];
    }
    return {windowMean(fit.slope, radius), windowMean(fit.offset, radius)};
}

} // namespace

std::optional<std::array<double, 3>> normalisedAirlight(const std::array<double, 3>& airlight) {
    double largest = 0;
    for (double channel : airlight)
        if (channel > largest) largest = channel; // false for NaN
    if (!(largest > 0) || !std::isfinite(largest)) return std::nullopt;
    return std::array{airlight[0] / largest, airlight[1] / largest, airlight[2] / largest};
}

std::optional<std::array<double, 3>> measuredAirlight(const ConstTileView& small) {
    if (small.rect.isEmpty()) return std::nullopt;
    ScalarField dark(small.rect.size());
    forEachPixel(small, [&](std::size_t i, const std::array<double, 3>& c) {
        dark[i] = std::min({c[0], c[1], c[2]});
    });
    dark = windowMinimum(dark, patchRadius(small.rect.size()));

    // All pixels from the threshold on, so that equal ones do not depend on their order.
    std::vector<double> ordered = dark.values();
    const std::size_t brightest =
        std::max<std::size_t>(1, std::size_t(double(ordered.size()) * kBrightestShare));
    const auto nth = ordered.begin() + std::ptrdiff_t(brightest - 1);
    std::nth_element(ordered.begin(), nth, ordered.end(), std::greater<>());
    const double threshold = *nth;

    std::array<double, 3> sum{};
    double pixels = 0;
    forEachPixel(small, [&](std::size_t i, const std::array<double, 3>& c) {
        if (dark[i] < threshold) return;
        for (int k = 0; k < 3; ++k)
            sum[k] += c[k];
        ++pixels;
    });
    std::array<double, 3> air{sum[0] / pixels, sum[1] / pixels, sum[2] / pixels};
    if (!normalisedAirlight(air)) return std::nullopt;
    return believable(air);
}

Raster fittedHazeMap(const ConstTileView& small, const std::array<double, 3>& airlight) {
    KELVARO_REQUIRE(!small.rect.isEmpty());
    ScalarField guide(small.rect.size()), dark(small.rect.size());
    forEachPixel(small, [&](std::size_t i, const std::array<double, 3>& c) {
        std::array<double, 3> relative{};
        for (int k = 0; k < 3; ++k)
            relative[k] = c[k] / std::max(airlight[k], kLeastAirlight);
        guide[i] = std::min((relative[0] + relative[1] + relative[2]) / 3, kBrightestGuide);
        dark[i] = std::min({relative[0], relative[1], relative[2]});
    });
    const int patch = patchRadius(small.rect.size());
    ScalarField depth = windowMinimum(dark, patch);
    for (double& d : depth.values())
        d = std::min(d, 1.0); // a transmission of 0 to 1
    const LinearFit fit = guidedFit(guide, depth, kFitRadii * patch);
    // Bright detail must not be given more depth than the patches around it reach.
    const ScalarField cap = windowMean(windowMaximum(depth, patch), patch);

    Raster map(small.rect, false);
    const std::size_t width = std::size_t(small.rect.width);
    const ScalarField* planes[3] = {&fit.slope, &fit.offset, &cap};
    for (int plane = 0; plane < 3; ++plane)
        for (int y = 0; y < small.rect.height; ++y)
            std::transform(planes[plane]->row(y), planes[plane]->row(y) + width, map.row(plane, y),
                           [](double value) { return float(value); });
    return map;
}

} // namespace kelvaro
