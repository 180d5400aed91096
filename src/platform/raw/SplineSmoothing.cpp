#include "platform/raw/SplineSmoothing.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/raw/SplineSmoothing.cpp"
#ifndef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#endif
#include <hwy/foreach_target.h> // must come before highway.h

#include <hwy/highway.h>

// Plain loops that the compiler turns into vectors of each target.
HWY_BEFORE_NAMESPACE();
namespace kelvaro {
namespace HWY_NAMESPACE {

// Of five values that lie side by side.
void smoothFive(const float* HWY_RESTRICT a, const float* HWY_RESTRICT b,
                const float* HWY_RESTRICT c, const float* HWY_RESTRICT d,
                const float* HWY_RESTRICT e, float* HWY_RESTRICT out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        out[i] = 0.0625f * (a[i] + e[i]) + 0.25f * (b[i] + d[i]) + 0.375f * c[i];
    }
}

} // namespace HWY_NAMESPACE
} // namespace kelvaro
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvaro {

HWY_EXPORT(smoothFive);

void smoothedRow(const RowRing& in, int y, int step, float* scratch, float* out) {
    const int width = in.width, reach = 2 * step;
    HWY_DYNAMIC_DISPATCH(smoothFive)
    (in.clamped(y - reach), in.clamped(y - step), in.row(y), in.clamped(y + step),
     in.clamped(y + reach), scratch, std::size_t(width));
    const auto edge = [&](int x) {
        const auto at = [&](int k) { return scratch[std::clamp(x + k * step, 0, width - 1)]; };
        out[x] = 0.0625f * (at(-2) + at(2)) + 0.25f * (at(-1) + at(1)) + 0.375f * at(0);
    };
    for (int x = 0; x < std::min(reach, width); ++x)
        edge(x);
    for (int x = std::max(reach, width - reach); x < width; ++x)
        edge(x);
    if (width <= 2 * reach) return;
    const float* p = scratch + reach;
    HWY_DYNAMIC_DISPATCH(smoothFive)
    (p - reach, p - step, p, p + step, p + reach, out + reach, std::size_t(width - 2 * reach));
}

} // namespace kelvaro
#endif
