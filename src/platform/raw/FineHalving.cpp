#include "platform/raw/FineHalving.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/raw/FineHalving.cpp"
#ifndef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#endif
#include <hwy/foreach_target.h> // must come before highway.h

#include <hwy/highway.h>

#include <vector>

HWY_BEFORE_NAMESPACE();
namespace kelvaro {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// The compressed value of infinity. Middle grey to four stops above it come out in the proportions
// of the rendering curve within a quarter.
constexpr float kLimit = 1.37f, kInverseSquare = 1 / (kLimit * kLimit);
// Lanczos with three lobes: the weights of pixels 0.5, 1.5 … 5.5 from the middle. Keeps what a view
// of a third of the size shows within 3%.
constexpr int kTaps = 6;
constexpr float kWeights[kTaps] = {0.4463854f,  0.1355053f, -0.0666373f,
                                   -0.0339986f, 0.0150561f, 0.0036891f};

// v / √(1 + v² / limit²), in place on a row of `count` values.
void compressRow(float* row, int count) {
    const hn::ScalableTag<float> tag;
    for (int x = 0; x < count; x += int(hn::Lanes(tag))) {
        const auto v = hn::LoadU(tag, row + x);
        const auto root =
            hn::Sqrt(hn::MulAdd(v * v, hn::Set(tag, kInverseSquare), hn::Set(tag, 1.0f)));
        hn::StoreU(v / root, tag, row + x);
    }
}

// One row of the result from twelve compressed rows from `rows` on, of twice its length and the
// border; `down` has room for these.
void halveRow(const float* rows, std::ptrdiff_t stride, float* down, float* out, int count) {
    const hn::ScalableTag<float> tag;
    const int wide = 2 * count + 2 * kHalvingBorder;
    for (int x = 0; x < wide; x += int(hn::Lanes(tag))) {
        auto sum = hn::Zero(tag);
        for (int k = 0; k < kTaps; ++k) {
            const auto pair = hn::LoadU(tag, rows + (kTaps - 1 - k) * stride + x) +
                              hn::LoadU(tag, rows + (kTaps + k) * stride + x);
            sum = hn::MulAdd(pair, hn::Set(tag, kWeights[k]), sum);
        }
        hn::StoreU(sum, tag, down + x);
    }
    // The filter may overshoot the limit, which stands for infinity: 0.998 of it is as bright
    // as 21.
    const auto most = hn::Set(tag, 0.998f * kLimit);
    for (int x = 0; x < count; x += int(hn::Lanes(tag))) {
        hn::Vec<decltype(tag)> even[kTaps], odd[kTaps];
        for (int k = 0; k < kTaps; ++k)
            hn::LoadInterleaved2(tag, down + 2 * (x + k), even[k], odd[k]);
        auto sum = hn::Zero(tag);
        for (int k = 0; k < kTaps; ++k) {
            // Columns kTaps − 1 − k and kTaps + k, of which one is even and one odd.
            const int before = kTaps - 1 - k, after = kTaps + k;
            const auto left = before % 2 ? odd[before / 2] : even[before / 2];
            const auto right = after % 2 ? odd[after / 2] : even[after / 2];
            sum = hn::MulAdd(left + right, hn::Set(tag, kWeights[k]), sum);
        }
        const auto v = hn::Max(hn::Min(sum, most), hn::Neg(most));
        const auto root =
            hn::Sqrt(hn::NegMulAdd(v * v, hn::Set(tag, kInverseSquare), hn::Set(tag, 1.0f)));
        hn::StoreU(v / root, tag, out + x);
    }
}

} // namespace HWY_NAMESPACE
} // namespace kelvaro
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvaro {

constexpr int kRowPadding = 64; // floats that the last vector of a row may touch

HWY_EXPORT(compressRow);
HWY_EXPORT(halveRow);

void halveFinely(float* plane, std::ptrdiff_t stride, int width, int height) {
    const int wide = 2 * width + 2 * kHalvingBorder;
    for (int row = 0; row < 2 * height + 2 * kHalvingBorder; ++row)
        HWY_DYNAMIC_DISPATCH(compressRow)(plane + row * stride, wide);
    // Row `row` is never needed again once it is overwritten.
    std::vector<float> down(std::size_t(wide) + 2 * kRowPadding);
    for (int row = 0; row < height; ++row) {
        HWY_DYNAMIC_DISPATCH(halveRow)
        (plane + 2 * row * stride, stride, down.data(), plane + row * stride, width);
    }
}

} // namespace kelvaro
#endif
