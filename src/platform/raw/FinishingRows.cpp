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

void shrinkRow(const LevelRow& row, int step, NoiseLine noise, float times, int count) {
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::ScalableTag<float> tag;
    const auto zero = hn::Zero(tag), one = hn::Set(tag, 1.0f), least = hn::Set(tag, 1e-20f);
    const auto darkAt = hn::Set(tag, noise.darkAt);
    const auto slope = hn::Set(tag, 1 / std::max(1e-6f, noise.lightAt - noise.darkAt));
    const auto dark = hn::Set(tag, times * noise.dark);
    const auto range = hn::Set(tag, times * (noise.light - noise.dark));
    for (int x = 0; x < count; x += int(hn::Lanes(tag))) {
        const auto smooth = splineAt(tag, row.down + x, step);
        const auto part = hn::Mul(hn::Sub(hn::LoadU(tag, row.y + x), darkAt), slope);
        const auto limit = hn::MulAdd(hn::Min(hn::Max(part, zero), one), range, dark);
        const auto d = hn::Sub(hn::LoadU(tag, row.in + x), smooth);
        const auto square = hn::Mul(d, d);
        const auto all = hn::MulAdd(limit, limit, hn::Add(square, least));
        auto sum = hn::Mul(d, hn::Div(square, all));
        if (!row.isFirst) sum = hn::Add(sum, hn::LoadU(tag, row.sum + x));
        if (row.isLast) {
            sum = hn::Add(sum, smooth);
        } else {
            hn::StoreU(smooth, tag, row.smooth + x);
        }
        hn::StoreU(sum, tag, row.sum + x);
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
