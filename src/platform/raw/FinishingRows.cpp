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
namespace hn = hwy::HWY_NAMESPACE;

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
// evenly, which spares a division. The differences have all that depends on luminance alone in
// common but the range of their noise.
template<Details use>
HWY_INLINE void shrink(const LevelRows& rows, int step, const NoiseLine* noise, float times,
                       int count) {
    const hn::ScalableTag<float> tag;
    const auto reciprocal = [times](float deviation) {
        return 0.5f / std::max(1e-6f, times * deviation);
    };
    const float slope = 1 / std::max(1e-6f, noise->lightAt - noise->darkAt);
    const auto zero = hn::Zero(tag), one = hn::Set(tag, 1.0f);
    const auto two = hn::Set(tag, 2.0f), three = hn::Set(tag, 3.0f);
    const auto slopes = hn::Set(tag, slope), start = hn::Set(tag, -noise->darkAt * slope);
    hn::Vec<decltype(tag)> scale[2], range[2];
    for (int c = 0; c < 2; ++c) {
        const float dark = reciprocal(noise[c].dark);
        scale[c] = hn::Set(tag, dark);
        range[c] = hn::Set(tag, reciprocal(noise[c].light) - dark);
    }
    const LevelRows r = rows; // which the compiler would take for something that rows overwrite
    for (int x = 0; x < count; x += int(hn::Lanes(tag))) {
        const auto bent = hn::MulAdd(hn::LoadU(tag, r.y + x), slopes, start);
        const auto part = hn::Min(hn::Max(bent, zero), one);
        for (int c = 0; c < 2; ++c) {
            const auto smooth = splineAt(tag, r.down[c] + x, step);
            const auto d = hn::Sub(hn::LoadU(tag, r.in[c] + x), smooth);
            const auto inverse = hn::MulAdd(part, range[c], scale[c]);
            const auto t = hn::Min(hn::Abs(hn::Mul(d, inverse)), one);
            const auto worth = hn::Mul(hn::Mul(t, t), hn::NegMulAdd(two, t, three));
            if (use == Details::removed) {
                hn::StoreU(hn::NegMulAdd(d, worth, d), tag, r.parts[c] + x);
                continue;
            }
            hn::StoreU(smooth, tag, r.smooth[c] + x);
            const auto sum = use == Details::begun ? hn::Mul(d, worth)
                                                   : hn::Add(hn::MulAdd(d, worth, smooth),
                                                             hn::LoadU(tag, r.parts[c] + x));
            hn::StoreU(sum, tag, r.parts[c] + x);
        }
    }
}

void shrinkRows(const LevelRows& rows, Details use, int step, const NoiseLine* noise, float times,
                int count) {
    switch (use) {
    case Details::begun:
        return shrink<Details::begun>(rows, step, noise, times, count);
    case Details::summed:
        return shrink<Details::summed>(rows, step, noise, times, count);
    case Details::removed:
        return shrink<Details::removed>(rows, step, noise, times, count);
    }
}

void halfOfRow(const float* HWY_RESTRICT in, float* HWY_RESTRICT out, int count) {
    const hn::ScalableTag<float> tag;
    const int lanes = int(hn::Lanes(tag));
    hn::Vec<decltype(tag)> even, odd;
    for (int x = 0; x < count; x += 2 * lanes) {
        hn::LoadInterleaved2(tag, in + x, even, odd);
        hn::StoreU(even, tag, out + x / 2);
    }
}

void takeFromRow(const float* HWY_RESTRICT above, const float* HWY_RESTRICT below,
                 float* HWY_RESTRICT values, int count) {
    const hn::ScalableTag<float> tag;
    const int lanes = int(hn::Lanes(tag));
    const auto half = hn::Set(tag, 0.5f);
    const auto sumAt = [&](int k) HWY_ATTR {
        return hn::Mul(hn::Add(hn::LoadU(tag, above + k), hn::LoadU(tag, below + k)), half);
    };
    HWY_ALIGN float parts[2 * hn::MaxLanes(tag)];
    for (int x = 0; x < count; x += 2 * lanes) {
        const auto here = sumAt(x / 2);
        const auto between = hn::Mul(hn::Add(here, sumAt(x / 2 + 1)), half);
        hn::StoreInterleaved2(here, between, tag, parts);
        for (int i = 0; i < 2; ++i) {
            float* to = values + x + i * lanes;
            hn::StoreU(hn::Sub(hn::LoadU(tag, to), hn::Load(tag, parts + i * lanes)), tag, to);
        }
    }
}

void sharpenRow(const float* HWY_RESTRICT y, const float* HWY_RESTRICT down, NoiseLine noise,
                float amount, float* HWY_RESTRICT out, int count) {
    const hn::ScalableTag<float> tag;
    const auto constant = [&](float v) HWY_ATTR { return hn::Set(tag, v); };
    const auto slope = constant(1 / std::max(1e-6f, noise.lightAt - noise.darkAt));
    const auto darkAt = constant(noise.darkAt), amounts = constant(amount);
    const auto dark = constant(2 * noise.dark), range = constant(2 * (noise.light - noise.dark));
    const auto zero = hn::Zero(tag), one = constant(1), tiny = constant(1e-20f),
               strong = constant(14);
    for (int x = 0; x < count; x += int(hn::Lanes(tag))) {
        const auto here = hn::LoadU(tag, y + x);
        const auto d = hn::Sub(here, splineAt(tag, down + x, 1));
        const auto bent = hn::Mul(hn::Sub(here, darkAt), slope);
        const auto limit = hn::MulAdd(hn::Min(hn::Max(bent, zero), one), range, dark);
        const auto square = hn::Mul(d, d);
        // Seen d² / (d² + limit²), and weakened by 1 + 14 |d|.
        const auto bottom = hn::Mul(hn::Add(square, hn::MulAdd(limit, limit, tiny)),
                                    hn::MulAdd(strong, hn::Abs(d), one));
        const auto added = hn::Div(hn::Mul(hn::Mul(amounts, d), square), bottom);
        hn::StoreU(hn::Add(here, added), tag, out + x);
    }
}

} // namespace HWY_NAMESPACE
} // namespace kelvaro
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvaro {

HWY_EXPORT(splitRow);
HWY_EXPORT(joinRow);
HWY_EXPORT(shrinkRows);
HWY_EXPORT(halfOfRow);
HWY_EXPORT(takeFromRow);
HWY_EXPORT(sharpenRow);

void splitColours(const float* r, const float* g, const float* b, float toe, float* y, float* u,
                  float* v, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(splitRow)(r, g, b, toe, y, u, v, count);
}

void joinColours(const float* y, const float* u, const float* v, float toe, float* r, float* g,
                 float* b, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(joinRow)(y, u, v, toe, r, g, b, count);
}

void sharpenLuminance(const float* y, const float* down, const NoiseLine& noise, float amount,
                      float* out, int count) {
    HWY_DYNAMIC_DISPATCH(sharpenRow)(y, down, noise, amount, out, count);
}

void shrinkDetails(const LevelRows& rows, Details use, int step, const NoiseLine (&noise)[2],
                   float times, int count) {
    HWY_DYNAMIC_DISPATCH(shrinkRows)(rows, use, step, noise, times, count);
}

void takeHalf(const float* in, float* out, int count) {
    HWY_DYNAMIC_DISPATCH(halfOfRow)(in, out, count);
}

void takeAway(const float* above, const float* below, float* values, int count) {
    HWY_DYNAMIC_DISPATCH(takeFromRow)(above, below, values, count);
}

} // namespace kelvaro
#endif
