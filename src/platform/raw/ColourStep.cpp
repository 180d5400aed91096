#include "platform/raw/ColourStep.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/raw/ColourStep.cpp"
#ifndef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#endif
#include <hwy/foreach_target.h> // must come before highway.h

#include <hwy/highway.h>

#include <cmath>

HWY_BEFORE_NAMESPACE();
namespace kelvaro {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// `m` holds three rows of three.
void threeColours(float* r, float* g, float* b, const float* m, std::size_t count) {
    const hn::ScalableTag<float> tag;
    const auto limit = hn::Set(tag, 1e9f);
    const auto step = hn::Lanes(tag);
    const auto convert = [&](auto x, auto y, auto z, const float* row) HWY_ATTR {
        const auto sum =
            hn::MulAdd(hn::Set(tag, row[0]), x,
                       hn::MulAdd(hn::Set(tag, row[1]), y, hn::Mul(hn::Set(tag, row[2]), z)));
        return hn::IfThenElseZero(hn::Lt(hn::Abs(sum), limit), sum);
    };
    // Rows are padded to whole groups, so the last vector may reach over.
    for (std::size_t i = 0; i < count; i += step) {
        const auto x = hn::LoadU(tag, r + i), y = hn::LoadU(tag, g + i), z = hn::LoadU(tag, b + i);
        hn::StoreU(convert(x, y, z, m), tag, r + i);
        hn::StoreU(convert(x, y, z, m + 3), tag, g + i);
        hn::StoreU(convert(x, y, z, m + 6), tag, b + i);
    }
}

} // namespace HWY_NAMESPACE
} // namespace kelvaro
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvaro {

HWY_EXPORT(threeColours);

ColourStep::ColourStep(const SensorImage& sensor) : colours_(sensor.colours) {
    const double gain = std::exp2(sensor.exposureStops);
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t c = 0; c < kMaximumChannels; ++c) {
            matrix_[i][c] = float(sensor.colour.toWorking[i][c] * gain);
        }
    }
}

void ColourStep::run(float* const (&rows)[kMaximumChannels], int count) const {
    if (colours_ == 3) {
        float m[9];
        for (int i = 0; i < 9; ++i)
            m[i] = matrix_[i / 3][i % 3];
        HWY_DYNAMIC_DISPATCH(threeColours)(rows[0], rows[1], rows[2], m, std::size_t(count));
        return;
    }
    for (int x = 0; x < count; ++x) {
        float v[kMaximumChannels] = {};
        for (int c = 0; c < colours_; ++c)
            v[c] = rows[c][x];
        for (int i = 0; i < 3; ++i) {
            const float* m = matrix_[i];
            const float sum = m[0] * v[0] + m[1] * v[1] + m[2] * v[2] + m[3] * v[3];
            rows[i][x] = std::abs(sum) < 1e9f ? sum : 0.0f;
        }
    }
}

} // namespace kelvaro
#endif
