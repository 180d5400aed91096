#include "platform/raw/SplineSmoothing.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/raw/SplineSmoothing.cpp"
#ifndef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#endif
#include <hwy/foreach_target.h> // must come before highway.h

#include <hwy/highway.h>

#include "platform/raw/SplineTaps-inl.h"

HWY_BEFORE_NAMESPACE();
namespace kelvaro {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Of five rows. The last group is moved back so that it ends with the row.
void smoothDown(const float* const* rows, float* HWY_RESTRICT out, int count) {
    const hn::ScalableTag<float> tag;
    const int lanes = int(hn::Lanes(tag));
    if (count < lanes) {
        const hn::CappedTag<float, 1> one;
        for (int x = 0; x < count; ++x) {
            hn::StoreU(splineTaps(hn::LoadU(one, rows[0] + x), hn::LoadU(one, rows[1] + x),
                                  hn::LoadU(one, rows[2] + x), hn::LoadU(one, rows[3] + x),
                                  hn::LoadU(one, rows[4] + x)),
                       one, out + x);
        }
        return;
    }
    for (int i = 0; i < count; i += lanes) {
        const int x = std::min(i, count - lanes);
        hn::StoreU(splineTaps(hn::LoadU(tag, rows[0] + x), hn::LoadU(tag, rows[1] + x),
                              hn::LoadU(tag, rows[2] + x), hn::LoadU(tag, rows[3] + x),
                              hn::LoadU(tag, rows[4] + x)),
                   tag, out + x);
    }
}

// Of a row with padding at both ends.
void smoothAcross(const float* HWY_RESTRICT in, int step, float* HWY_RESTRICT out, int count) {
    const hn::ScalableTag<float> tag;
    const int lanes = int(hn::Lanes(tag));
    if (count < lanes) {
        const hn::CappedTag<float, 1> one;
        for (int x = 0; x < count; ++x)
            hn::StoreU(splineAt(one, in + x, step), one, out + x);
        return;
    }
    for (int i = 0; i < count; i += lanes) {
        const int x = std::min(i, count - lanes);
        hn::StoreU(splineAt(tag, in + x, step), tag, out + x);
    }
}

} // namespace HWY_NAMESPACE
} // namespace kelvaro
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvaro {

HWY_EXPORT(smoothDown);
HWY_EXPORT(smoothAcross);

float* smoothedDown(const RowRing& in, int y, int step, float* scratch) {
    float* first = scratch + kSmoothingPadding;
    const float* const rows[5] = {in.clamped(y - 2 * step), in.clamped(y - step), in.row(y),
                                  in.clamped(y + step), in.clamped(y + 2 * step)};
    HWY_DYNAMIC_DISPATCH(smoothDown)(rows, first, in.width);
    std::fill_n(first - 2 * step, 2 * step, first[0]);
    std::fill_n(first + in.width, 2 * step, first[in.width - 1]);
    return first;
}

void smoothedRow(const RowRing& in, int y, int step, float* scratch, float* out) {
    HWY_DYNAMIC_DISPATCH(smoothAcross)(smoothedDown(in, y, step, scratch), step, out, in.width);
}

} // namespace kelvaro
#endif
