#include "platform/raw/QuadRows.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/raw/QuadRows.cpp"
#ifndef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#endif
#include <hwy/foreach_target.h> // must come before highway.h

#include <hwy/highway.h>

#include <algorithm>
#include <bit>

HWY_BEFORE_NAMESPACE();
namespace kelvaro {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

const hn::ScalableTag<float> kTag;
using V = hn::Vec<decltype(kTag)>;

HWY_INLINE int lanes() {
    return int(hn::Lanes(kTag));
}
HWY_INLINE V constant(float v) {
    return hn::Set(kTag, v);
}

void levels(const std::uint16_t* samples, const PairLevels& l, int pairs, float* even, float* odd) {
    int k = 0;
#if HWY_TARGET != HWY_SCALAR // which has no pair of samples in one lane
    const hn::RebindToSigned<decltype(kTag)> integers;
    const hn::RebindToUnsigned<decltype(kTag)> both;
    const hn::Repartition<std::uint16_t, decltype(both)> words;
    const V blacks[2] = {constant(l.black[0]), constant(l.black[1])};
    const V scales[2] = {constant(l.scale[0]), constant(l.scale[1])};
    constexpr int low =
        std::endian::native == std::endian::little ? 0 : 1; // the half of a pair that comes first
    float* const out[2] = {even, odd};
    for (; k + lanes() <= pairs; k += lanes()) {
        const auto pair = hn::BitCast(both, hn::LoadU(words, samples + 2 * k));
        const hn::Vec<decltype(both)> halves[2] = {hn::And(pair, hn::Set(both, 0xffffU)),
                                                   hn::ShiftRight<16>(pair)};
        for (int i = 0; i < 2; ++i) {
            const V value = hn::ConvertTo(kTag, hn::BitCast(integers, halves[i ^ low]));
            hn::StoreU((value - blacks[i]) * scales[i], kTag, out[i] + k);
        }
    }
#endif
    for (; k < pairs; ++k) {
        even[k] = (float(samples[2 * k]) - l.black[0]) * l.scale[0];
        odd[k] = (float(samples[2 * k + 1]) - l.black[1]) * l.scale[1];
    }
}

int firstAbove(const float* even, const float* odd, const float* limits, int from, int pairs) {
    const V evenLimit = constant(limits[0]), oddLimit = constant(limits[1]);
    int group = from / kPairGroup * kPairGroup;
    if (from >= pairs) return pairs;
    for (; group + kPairGroup <= pairs; group += kPairGroup) {
        auto above = hn::Gt(hn::Zero(kTag), hn::Zero(kTag));
        for (int k = group; k < group + kPairGroup; k += lanes()) {
            above = hn::Or(above, hn::Or(hn::Gt(hn::LoadU(kTag, even + k), evenLimit),
                                         hn::Gt(hn::LoadU(kTag, odd + k), oddLimit)));
        }
        if (!hn::AllFalse(kTag, above)) return group;
    }
    for (int k = group; k < pairs; ++k) {
        if (even[k] > limits[0] || odd[k] > limits[1]) return group;
    }
    return pairs;
}

HWY_INLINE V quarterWay(V a, V b, V c, V d) {
    const V outer = hn::MulAdd(d, constant(-0.0234375f), a * constant(-0.0703125f));
    const V spline =
        hn::MulAdd(b, constant(0.8671875f), hn::MulAdd(c, constant(0.2265625f), outer));
    return hn::Min(hn::Max(spline, hn::Min(b, c)), hn::Max(b, c));
}

// The last group is moved back so that it ends with the row; shorter rows are done one by one.
template<class F>
HWY_INLINE void forGroups(int count, F&& use) {
    for (int x = 0; x < count; x += lanes())
        use(std::min(x, count - lanes()));
}

void quarters(const float* HWY_RESTRICT a, const float* HWY_RESTRICT b, const float* HWY_RESTRICT c,
              const float* HWY_RESTRICT d, float* HWY_RESTRICT out, int count) {
    if (count < lanes()) {
        for (int x = 0; x < count; ++x) {
            const V v = quarterWay(constant(a[x]), constant(b[x]), constant(c[x]), constant(d[x]));
            out[x] = hn::GetLane(v);
        }
        return;
    }
    forGroups(count, [&](int x) HWY_ATTR {
        hn::StoreU(quarterWay(hn::LoadU(kTag, a + x), hn::LoadU(kTag, b + x),
                              hn::LoadU(kTag, c + x), hn::LoadU(kTag, d + x)),
                   kTag, out + x);
    });
}

// Of `count` quads as many as fill whole vectors; returns how many these were.
int quads(const QuadRow& row, const float* limits, int count, const ColourSums& sums,
          bool& isAnyAbove) {
    const V least = constant(0.05f), zero = hn::Zero(kTag);
    auto anyAbove = hn::Gt(hn::Zero(kTag), hn::Zero(kTag));
    int x = 0;
    for (; x + lanes() <= count; x += lanes()) {
        const V r = hn::LoadU(kTag, row.red + x), b = hn::LoadU(kTag, row.blue + x);
        const V g1 = hn::LoadU(kTag, row.firstGreen + x), g2 = hn::LoadU(kTag, row.secondGreen + x);
        const V g = (g1 + g2) * constant(0.5f);
        const auto isAbove =
            hn::Or(hn::Gt(hn::Max(g1, g2), constant(limits[1])),
                   hn::Or(hn::Gt(r, constant(limits[0])), hn::Gt(b, constant(limits[2]))));
        anyAbove = hn::Or(anyAbove, isAbove);
        const V sum = r + g + b, mean = sum * constant(1.0f / 3);
        const auto counts = hn::AndNot(isAbove, hn::Gt(sum, least));
        const V weight = hn::IfThenElseZero(counts, mean * mean);
        const V part = hn::IfThenElseZero(counts, mean * constant(1.0f / 3)); // weight / sum
        const auto add = [&](float* to, V value) HWY_ATTR {
            hn::StoreU(hn::LoadU(kTag, to + x) + value, kTag, to + x);
        };
        add(sums.red, part * hn::Max(r, zero));
        add(sums.green, part * hn::Max(g, zero));
        add(sums.blue, part * hn::Max(b, zero));
        add(sums.weight, weight);
    }
    isAnyAbove = !hn::AllFalse(kTag, anyAbove);
    return x;
}

} // namespace HWY_NAMESPACE
} // namespace kelvaro
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvaro {

HWY_EXPORT(levels);
HWY_EXPORT(firstAbove);
HWY_EXPORT(quarters);
HWY_EXPORT(quads);

void levelPairs(const std::uint16_t* samples, const PairLevels& l, int pairs, float* even,
                float* odd) {
    HWY_DYNAMIC_DISPATCH(levels)(samples, l, pairs, even, odd);
}

int nextAbove(const float* even, const float* odd, const float (&limits)[2], int from, int pairs) {
    return HWY_DYNAMIC_DISPATCH(firstAbove)(even, odd, limits, from, pairs);
}

void quarterWayRow(const float* a, const float* b, const float* c, const float* d, float* out,
                   int count) {
    HWY_DYNAMIC_DISPATCH(quarters)(a, b, c, d, out, count);
}

bool addQuads(const QuadRow& row, const float (&limits)[3], int count, const ColourSums& sums) {
    bool isAnyAbove = false;
    const int done = HWY_DYNAMIC_DISPATCH(quads)(row, limits, count, sums, isAnyAbove);
    for (int x = done; x < count; ++x) {
        const float r = row.red[x], g1 = row.firstGreen[x], g2 = row.secondGreen[x],
                    b = row.blue[x];
        const float g = 0.5f * (g1 + g2), sum = r + g + b, mean = sum * (1.0f / 3);
        if (r > limits[0] || std::max(g1, g2) > limits[1] || b > limits[2]) {
            isAnyAbove = true;
        } else if (sum > 0.05f) {
            const float part = mean * (1.0f / 3);
            sums.red[x] += part * std::max(r, 0.0f);
            sums.green[x] += part * std::max(g, 0.0f);
            sums.blue[x] += part * std::max(b, 0.0f);
            sums.weight[x] += mean * mean;
        }
    }
    return isAnyAbove;
}

} // namespace kelvaro
#endif
