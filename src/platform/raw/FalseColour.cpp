#include "platform/raw/FalseColour.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/raw/FalseColour.cpp"
#ifndef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#endif
#include <hwy/foreach_target.h> // must come before highway.h

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kelvaro {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

template<class V>
struct Three {
    V least, middle, most;
};

template<class V>
HWY_INLINE Three<V> sorted(V a, V b, V c) {
    const V low = hn::Min(a, b), high = hn::Max(a, b), upper = hn::Min(high, c);
    return {hn::Min(low, c), hn::Max(low, upper), hn::Max(high, c)};
}

template<class D>
HWY_INLINE Three<hn::Vec<D>> sortedColumn(D tag, const ThreeRows& rows, int x) {
    return sorted(hn::LoadU(tag, rows.above + x), hn::LoadU(tag, rows.here + x),
                  hn::LoadU(tag, rows.below + x));
}

// The median of nine lies between the largest of the least of three columns, the middle of their
// middles and the least of their largest.
template<class D>
HWY_INLINE hn::Vec<D> medianAt(D tag, const ThreeRows& rows, int x) {
    const auto a = sortedColumn(tag, rows, x - 1), b = sortedColumn(tag, rows, x),
               c = sortedColumn(tag, rows, x + 1);
    return sorted(hn::Max(hn::Max(a.least, b.least), c.least),
                  sorted(a.middle, b.middle, c.middle).middle,
                  hn::Min(hn::Min(a.most, b.most), c.most))
        .middle;
}

// How far luminance differs among a pixel and its four neighbours.
template<class D>
HWY_INLINE hn::Vec<D> edgeAt(D tag, const ThreeRows& rows, int x) {
    const auto column = sortedColumn(tag, rows, x);
    const auto left = hn::LoadU(tag, rows.here + x - 1), right = hn::LoadU(tag, rows.here + x + 1);
    return hn::Sub(hn::Max(column.most, hn::Max(left, right)),
                   hn::Min(column.least, hn::Min(left, right)));
}

void calmRow(const ThreeRows& luminance, const ThreeRows* differences, float* const* out,
             int count) {
    const hn::ScalableTag<float> tag;
    const auto zero = hn::Zero(tag), one = hn::Set(tag, 1.0f), minusOne = hn::Set(tag, -1.0f);
    const auto slope = hn::Set(tag, 1 / kLeastEdge);
    for (int c = 0; c < 2; ++c)
        out[c][0] = differences[c].here[0];
    for (int x = 1; x < count; x += int(hn::Lanes(tag))) {
        const auto part = hn::MulAdd(edgeAt(tag, luminance, x), slope, minusOne);
        const bool isEven = hn::AllFalse(tag, hn::Gt(part, zero));
        const auto share = hn::Min(hn::Max(part, zero), one);
        for (int c = 0; c < 2; ++c) {
            const auto here = hn::LoadU(tag, differences[c].here + x);
            if (isEven) {
                hn::StoreU(here, tag, out[c] + x);
                continue;
            }
            const auto median = medianAt(tag, differences[c], x);
            hn::StoreU(hn::MulAdd(hn::Sub(median, here), share, here), tag, out[c] + x);
        }
    }
    for (int c = 0; c < 2; ++c)
        out[c][count - 1] = differences[c].here[count - 1];
}

} // namespace HWY_NAMESPACE
} // namespace kelvaro
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvaro {

HWY_EXPORT(calmRow);

void removeFalseColour(const ThreeRows& luminance, const ThreeRows (&differences)[2],
                       float* const (&out)[2], int count) {
    HWY_DYNAMIC_DISPATCH(calmRow)(luminance, differences, out, count);
}

} // namespace kelvaro
#endif
