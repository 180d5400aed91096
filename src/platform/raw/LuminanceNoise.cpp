#include "platform/raw/LuminanceNoise.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/raw/LuminanceNoise.cpp"
#ifndef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#endif
#include <hwy/foreach_target.h> // must come before highway.h

#include <hwy/highway.h>

#include <algorithm>
#include <cmath>

// Plain loops that the compiler turns into vectors of each target.
HWY_BEFORE_NAMESPACE();
namespace kelvaro {
namespace HWY_NAMESPACE {

// Squares of details in parts of the noise's variance, whose deviation's reciprocal runs evenly.
void strengthRow(const float* HWY_RESTRICT in, const float* HWY_RESTRICT smooth, NoiseLine noise,
                 float times, float* HWY_RESTRICT out, int count) {
    const float dark = 1 / std::max(1e-6f, times * noise.dark);
    const float range = 1 / std::max(1e-6f, times * noise.light) - dark;
    const float slope = 1 / std::max(1e-6f, noise.lightAt - noise.darkAt);
    for (int x = 0; x < count; ++x) {
        const float t = std::min(std::max((smooth[x] - noise.darkAt) * slope, 0.0f), 1.0f);
        const float d = (in[x] - smooth[x]) * (dark + t * range);
        out[x] = d * d;
    }
}

// Noise counts wholly up to 1.2 times the deviation that is expected, and from twice as much on not
// at all.
HWY_INLINE float noisePart(float strength) {
    constexpr float kAll = 1.2f * 1.2f, kNone = 2 * 2;
    return std::min(std::max((kNone - strength) * (1 / (kNone - kAll)), 0.0f), 1.0f);
}

void quietRow(const float* HWY_RESTRICT y, const float* HWY_RESTRICT once,
              const float* HWY_RESTRICT twice, const float* HWY_RESTRICT fine,
              const float* HWY_RESTRICT coarse, float share, float sharpeningShare,
              float* HWY_RESTRICT out, int count) {
    for (int x = 0; x < count; ++x) {
        const float a = noisePart(fine[x]), b = noisePart(coarse[x]);
        const float removed = share * (a * (y[x] - once[x]) + b * (once[x] - twice[x]));
        out[x] -= sharpeningShare * a * (out[x] - y[x]) + removed;
    }
}

} // namespace HWY_NAMESPACE
} // namespace kelvaro
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvaro {

HWY_EXPORT(strengthRow);
HWY_EXPORT(quietRow);

namespace {

constexpr float kMostShare = 0.6f;
constexpr double kLeastSensitivity = 800;
// Of the finest detail: about what a sensor of middling size shows in middle grey at ISO 800 and at
// ISO 3200.
constexpr float kUnseen = 0.0055f, kSandy = 0.011f;
// What a demosaic leaves of a photosite's noise in the finest detail; and how the details of 2
// pixels compare with it, which is more than of white noise.
constexpr double kFinest = 0.84;
constexpr float kCoarser = 0.41f;

// Deviation of the finest detail at an encoded luminance, for 50,000 electrons at ISO 100 and a
// read noise of 3.
double expectedNoise(double encoded, double sensitivity, double toe, double gain) {
    const double v =
        std::max(0.0, encoded * (encoded + std::sqrt(encoded * encoded + 4 * toe)) / 2);
    const double electrons = 50000 / (sensitivity / 100), seen = v / gain;
    const double linear = gain * std::sqrt(seen / electrons + 9 / (electrons * electrons));
    return kFinest * linear * (v + 2 * toe) / (2 * std::pow(v + toe, 1.5)); // d v / √(v + toe)
}

} // namespace

GrainModel grainModel(const NoiseLine& measured, double sensitivity, double toe, double gain) {
    GrainModel model;
    if (!(sensitivity >= kLeastSensitivity) || !std::isfinite(sensitivity)) return model;
    model.noise = measured;
    const auto bound = [&](float at, float& noise) {
        noise = std::min(noise, float(1.2 * expectedNoise(double(at), sensitivity, toe, gain)));
    };
    bound(measured.darkAt, model.noise.dark);
    bound(measured.lightAt, model.noise.light);
    const float middle = (model.noise.dark + model.noise.light) / 2;
    model.share = kMostShare * std::clamp((middle - kUnseen) / (kSandy - kUnseen), 0.0f, 1.0f);
    return model;
}

void LuminanceNoise::resize(int width, std::ptrdiff_t stride) {
    const auto size = std::size_t(stride) * kRows;
    for (auto* rings : {&smooth_, &strength_, &once_, &twice_}) {
        for (auto& ring : *rings) {
            if (ring.size() < size) ring.resize(size);
        }
    }
    if (scratch_.size() < smoothingScratch(width)) scratch_.resize(smoothingScratch(width));
}

// Each step follows the one before as soon as the rows that it reaches for are there.
void LuminanceNoise::addRow(const GrainModel& grain, const RowRing& luminance,
                            const RowRing& sharpened, int t) {
    const auto ring = [&](std::vector<float>& v) {
        return RowRing{v.data(), kRows, luminance.width, luminance.height, luminance.stride};
    };
    const auto smoothen = [&](const RowRing& from, int row, int step, std::vector<float>& to) {
        if (row >= 0) smoothedRow(from, row, step, scratch_.data(), ring(to).row(row));
    };
    const auto measure = [&](const RowRing& in, int row, std::size_t level, float times) {
        if (row < 0) return;
        HWY_DYNAMIC_DISPATCH(strengthRow)
        (in.row(row), ring(smooth_[level]).row(row), grain.noise, times,
         ring(strength_[level]).row(row), luminance.width);
    };
    smoothen(luminance, t - 2, 1, smooth_[0]);
    measure(luminance, t - 2, 0, 1);
    smoothen(ring(strength_[0]), t - 4, 1, once_[0]);
    smoothen(ring(smooth_[0]), t - 6, 2, smooth_[1]);
    measure(ring(smooth_[0]), t - 6, 1, kCoarser);
    smoothen(ring(once_[0]), t - 8, 2, twice_[0]);
    smoothen(ring(strength_[1]), t - 8, 1, once_[1]);
    const int row = t - kReach;
    smoothen(ring(once_[1]), row, 2, twice_[1]);
    if (row < 0) return;
    HWY_DYNAMIC_DISPATCH(quietRow)
    (luminance.row(row), ring(smooth_[0]).row(row), ring(smooth_[1]).row(row),
     ring(twice_[0]).row(row), ring(twice_[1]).row(row), grain.share, grain.share / kMostShare,
     sharpened.row(row), luminance.width);
}

} // namespace kelvaro
#endif
