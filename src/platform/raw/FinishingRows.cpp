#include "platform/raw/FinishingRows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/raw/FinishingRows.cpp"
#ifndef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#endif
#include <hwy/foreach_target.h> // must come before highway.h

#include <hwy/highway.h>

#include "platform/raw/SplineTaps-inl.h"

#include <algorithm>
#include <cmath>

// Mostly plain loops that the compiler turns into vectors of each target. No two rows are the same,
// or it would have to doubt too many pairs of them.
HWY_BEFORE_NAMESPACE();
namespace kelvaro {
namespace HWY_NAMESPACE {

void splitRow(const float* HWY_RESTRICT r, const float* HWY_RESTRICT g, const float* HWY_RESTRICT b,
              float toe, float* HWY_RESTRICT y, float* HWY_RESTRICT u, float* HWY_RESTRICT v,
              std::size_t count) {
    const auto encode = [toe](float x) { return x / std::sqrt(std::abs(x) + toe); };
    for (std::size_t i = 0; i < count; ++i) {
        const float red = encode(r[i]), blue = encode(b[i]);
        const float light = 0.25f * (red + blue) + 0.5f * encode(g[i]);
        y[i] = light;
        u[i] = red - light;
        v[i] = blue - light;
    }
}

void joinRow(const float* HWY_RESTRICT y, const float* HWY_RESTRICT u, const float* HWY_RESTRICT v,
             float toe, float* HWY_RESTRICT r, float* HWY_RESTRICT g, float* HWY_RESTRICT b,
             std::size_t count) {
    const auto decode = [toe](float e) {
        return e * (std::abs(e) + std::sqrt(e * e + 4 * toe)) * 0.5f;
    };
    for (std::size_t i = 0; i < count; ++i) {
        r[i] = decode(y[i] + u[i]);
        b[i] = decode(y[i] + v[i]);
        g[i] = decode(y[i] - 0.5f * (u[i] + v[i]));
    }
}

// A detail of half its limit is worth a sixth of itself, one of the limit a half, and one of twice
// as much all of itself. `noise` may fall or rise with luminance; it is its reciprocal that runs
// evenly, which spares a division.
template<bool isFirst, bool isLast>
HWY_INLINE void shrink(const float* HWY_RESTRICT down, const float* HWY_RESTRICT in,
                       const float* HWY_RESTRICT y, float* HWY_RESTRICT smoothOut,
                       float* HWY_RESTRICT sumOut, int step, const NoiseLine& noise, float times,
                       int count) {
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::ScalableTag<float> tag;
    const auto reciprocal = [times](float deviation) {
        return 0.5f / std::max(1e-6f, times * deviation);
    };
    const float dark = reciprocal(noise.dark), light = reciprocal(noise.light);
    const float slope = 1 / std::max(1e-6f, noise.lightAt - noise.darkAt);
    const auto zero = hn::Zero(tag), one = hn::Set(tag, 1.0f);
    const auto two = hn::Set(tag, 2.0f), three = hn::Set(tag, 3.0f);
    const auto slopes = hn::Set(tag, slope), start = hn::Set(tag, -noise.darkAt * slope);
    const auto scale = hn::Set(tag, dark), range = hn::Set(tag, light - dark);
    for (int x = 0; x < count; x += int(hn::Lanes(tag))) {
        const auto smooth = splineAt(tag, down + x, step);
        const auto part = hn::MulAdd(hn::LoadU(tag, y + x), slopes, start);
        const auto inverse = hn::MulAdd(hn::Min(hn::Max(part, zero), one), range, scale);
        const auto d = hn::Sub(hn::LoadU(tag, in + x), smooth);
        const auto t = hn::Min(hn::Abs(hn::Mul(d, inverse)), one);
        const auto worth = hn::Mul(hn::Mul(t, t), hn::NegMulAdd(two, t, three));
        auto sum = isLast ? hn::MulAdd(d, worth, smooth) : hn::Mul(d, worth);
        if (!isFirst) sum = hn::Add(sum, hn::LoadU(tag, sumOut + x));
        if (!isLast) hn::StoreU(smooth, tag, smoothOut + x);
        hn::StoreU(sum, tag, sumOut + x);
    }
}

void shrinkRow(const LevelRow& row, int step, const NoiseLine& noise, float times, int count) {
    if (row.isFirst) {
        shrink<true, false>(row.down, row.in, row.y, row.smooth, row.sum, step, noise, times,
                            count);
    } else if (row.isLast) {
        shrink<false, true>(row.down, row.in, row.y, nullptr, row.sum, step, noise, times, count);
    } else {
        shrink<false, false>(row.down, row.in, row.y, row.smooth, row.sum, step, noise, times,
                             count);
    }
}

void sharpenRow(const float* HWY_RESTRICT y, NoiseLine noise, float amount,
                float* HWY_RESTRICT smooth, std::size_t count) {
    const float slope = 1 / std::max(1e-6f, noise.lightAt - noise.darkAt);
    for (std::size_t i = 0; i < count; ++i) {
        const float t = std::min(std::max((y[i] - noise.darkAt) * slope, 0.0f), 1.0f);
        const float limit = 2 * (noise.dark + t * (noise.light - noise.dark));
        const float d = y[i] - smooth[i], square = d * d;
        const float seen = square / (square + limit * limit + 1e-20f);
        smooth[i] = y[i] + amount * d * seen / (1 + 14 * std::abs(d));
    }
}

} // namespace HWY_NAMESPACE
} // namespace kelvaro
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvaro {

HWY_EXPORT(splitRow);
HWY_EXPORT(joinRow);
HWY_EXPORT(shrinkRow);
HWY_EXPORT(sharpenRow);

void splitColours(const float* r, const float* g, const float* b, float toe, float* y, float* u,
                  float* v, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(splitRow)(r, g, b, toe, y, u, v, count);
}

void joinColours(const float* y, const float* u, const float* v, float toe, float* r, float* g,
                 float* b, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(joinRow)(y, u, v, toe, r, g, b, count);
}

void sharpenLuminance(const float* y, const NoiseLine& noise, float amount, float* smooth,
                      std::size_t count) {
    HWY_DYNAMIC_DISPATCH(sharpenRow)(y, noise, amount, smooth, count);
}

void shrinkDetail(const LevelRow& row, int step, const NoiseLine& noise, float times, int count) {
    HWY_DYNAMIC_DISPATCH(shrinkRow)(row, step, noise, times, count);
}

} // namespace kelvaro
#endif
