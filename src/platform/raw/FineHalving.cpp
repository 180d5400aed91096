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

// The rendering curve of one channel, which reaches 1 four stops above middle grey, and beyond it
// its own slope on the way to a limit, so that nothing is lost.
constexpr float kGrey = 0.18f, kGain = 1.017898f, kFirst = 1.7f, kSecond = 1.2f, kThird = 13.0685f;
constexpr float kWhite = 16, kBeyond = 0.064f;
// A filter may overshoot the limit, which stands for infinity; this much of the way is 18.
constexpr float kMostBeyond = 0.84f;

template<class V>
HWY_INLINE V constant(V, float value) {
    return hn::Set(hn::DFromV<V>(), value);
}

template<class V>
HWY_INLINE V compressed(V v) {
    const V u = hn::Abs(v) * constant(v, 1 / kGrey);
    const V within = u * (u + constant(v, kFirst)) * constant(v, kGain) /
                     hn::MulAdd(u, u + constant(v, kSecond), constant(v, kThird));
    const V white = constant(v, kWhite), one = constant(v, 1);
    const V above = hn::MulAdd(one - white / hn::Max(u, white), constant(v, kBeyond), one);
    return hn::CopySign(hn::IfThenElse(u < white, within, above), v);
}

// The other way, by the solution of a quadratic equation.
template<class V>
HWY_INLINE V expanded(V v) {
    const V y = hn::Abs(v), one = constant(v, 1), inside = hn::Min(y, one);
    const V a = constant(v, kGain) - inside, c = inside * constant(v, kThird);
    const V b = hn::NegMulAdd(inside, constant(v, kSecond), constant(v, kGain * kFirst));
    const V root = hn::Sqrt(hn::MulAdd(b, b, constant(v, 4) * a * c));
    const V within = constant(v, 2) * c / (b + root);
    const V part = hn::Min((y - one) * constant(v, 1 / kBeyond), constant(v, kMostBeyond));
    const V above = constant(v, kWhite) / (one - part);
    return hn::CopySign(hn::IfThenElse(y > one, above, within) * constant(v, kGrey), v);
}

// Lanczos with three lobes: the weights of pixels 0.5, 1.5 … 5.5 from the middle. Keeps what a view
// of a third of the size shows within 3%.
constexpr int kTaps = 6;
constexpr float kWeights[kTaps] = {0.4463854f,  0.1355053f, -0.0666373f,
                                   -0.0339986f, 0.0150561f, 0.0036891f};

// In place on a row of `count` values.
void compressRow(float* row, int count) {
    const hn::ScalableTag<float> tag;
    for (int x = 0; x < count; x += int(hn::Lanes(tag)))
        hn::StoreU(compressed(hn::LoadU(tag, row + x)), tag, row + x);
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
        hn::StoreU(expanded(sum), tag, out + x);
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
