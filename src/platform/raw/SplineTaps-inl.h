// The five taps of the B3 spline on vectors of floats. Included by vector sources once for each
// instruction set.
#if defined(KELVARO_SPLINE_TAPS_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef KELVARO_SPLINE_TAPS_INL
#undef KELVARO_SPLINE_TAPS_INL
#else
#define KELVARO_SPLINE_TAPS_INL
#endif

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kelvaro {
namespace HWY_NAMESPACE {

// (a + 4 b + 6 c + 4 d + e) / 16
template<class V>
HWY_INLINE V splineTaps(V a, V b, V c, V d, V e) {
    namespace hn = hwy::HWY_NAMESPACE;
    const hn::DFromV<V> tag;
    const V outer = hn::Add(a, e), inner = hn::Add(b, d);
    return hn::MulAdd(
        c, hn::Set(tag, 0.375f),
        hn::MulAdd(inner, hn::Set(tag, 0.25f), hn::Mul(outer, hn::Set(tag, 0.0625f))));
}

// Around `p`, `step` floats apart.
template<class D>
HWY_INLINE hwy::HWY_NAMESPACE::Vec<D> splineAt(D tag, const float* p, std::ptrdiff_t step) {
    namespace hn = hwy::HWY_NAMESPACE;
    return splineTaps(hn::LoadU(tag, p - 2 * step), hn::LoadU(tag, p - step), hn::LoadU(tag, p),
                      hn::LoadU(tag, p + step), hn::LoadU(tag, p + 2 * step));
}

} // namespace HWY_NAMESPACE
} // namespace kelvaro
HWY_AFTER_NAMESPACE();

#endif
