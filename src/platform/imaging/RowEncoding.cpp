#include "platform/imaging/RowEncoding.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/imaging/RowEncoding.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kelvaro::rows::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using D = hn::ScalableTag<float>;
using V = hn::Vec<D>;

struct EncodeRow {
    const BitmapFormat& format;
    bool withAlpha;
    bool matrix;
};

// Within 2e-7 of itself; 0 at 0. A seed for the inverse root r from the exponent, within 0.03; then
// x r³ is the root but for (1 - e)^(-3/4), e = 1 - x r⁴, for which a polynomial does: two square
// roots take three times as long.
HWY_INLINE V fourthRoot(V x) {
    const D d;
    const hn::RebindToSigned<D> di;
    const V r =
        hn::BitCast(d, hn::Sub(hn::Set(di, 1331173520), hn::ShiftRight<2>(hn::BitCast(di, x))));
    const V root = hn::Mul(hn::Mul(x, r), hn::Mul(r, r));
    const V e = hn::NegMulAdd(root, r, hn::Set(d, 1.0f)); // within 0.124
    static constexpr float c[] = {7.500000635e-01f, 6.562087439e-01f, 6.014907110e-01f,
                                  5.743102653e-01f, 5.477603720e-01f};
    V y = hn::Set(d, c[4]);
    for (int i = 3; i >= 0; --i)
        y = hn::MulAdd(y, e, hn::Set(d, c[i]));
    return hn::MulAdd(hn::Mul(root, e), y, root);
}

HWY_INLINE V srgbCurve(V x) {
    const D d;
    static constexpr float c[] = {1.461524844e+00f,  -1.155892968e+00f, 1.209145427e+00f,
                                  -8.984079957e-01f, 3.947105110e-01f,  -7.620964199e-02f};
    const V u = fourthRoot(x);
    V y = hn::Set(d, c[5]);
    for (int i = 4; i >= 0; --i)
        y = hn::MulAdd(y, u, hn::Set(d, c[i]));
    y = hn::MulAdd(y, u, hn::Set(d, 1.235760599e-01f));
    y = hn::MulAdd(y, u, hn::Set(d, -5.844660476e-02f));
    const V line = hn::Mul(x, hn::Set(d, 12.92f));
    return hn::IfThenElse(hn::Le(x, hn::Set(d, 0.0031308f)), line, y);
}

HWY_INLINE V clipped(V x) {
    const D d;
    // A NaN fails the test and becomes 0.
    return hn::Min(hn::IfThenElseZero(hn::Gt(x, hn::Zero(d)), x), hn::Set(d, 1.0f));
}

// One vector of pixels: alpha, primaries, and for integers the clip and the curve.
HWY_INLINE void finish(const EncodeRow& row, V& r, V& g, V& b, V& a) {
    const D d;
    using Alpha = BitmapFormat::Alpha;
    if (row.format.alpha == Alpha::overWhite) {
        const V rest = hn::Sub(hn::Set(d, 1.0f), a);
        r = hn::Add(r, rest), g = hn::Add(g, rest), b = hn::Add(b, rest);
    } else if (row.withAlpha) {
        const V scale = hn::IfThenElseZero(hn::Gt(a, hn::Zero(d)), hn::Div(hn::Set(d, 1.0f), a));
        r = hn::Mul(r, scale), g = hn::Mul(g, scale), b = hn::Mul(b, scale);
    }
    if (row.matrix) {
        const auto& m = row.format.toTarget;
        const auto line = [&](const std::array<float, 3>& k) HWY_ATTR {
            return hn::MulAdd(hn::Set(d, k[2]), b,
                              hn::MulAdd(hn::Set(d, k[1]), g, hn::Mul(hn::Set(d, k[0]), r)));
        };
        const V x = line(m[0]), y = line(m[1]), z = line(m[2]);
        r = x, g = y, b = z;
    }
    if (row.format.type == SampleType::f32) return;
    r = clipped(r), g = clipped(g), b = clipped(b), a = clipped(a);
    if (row.format.curve == TransferCurve::sRGB)
        r = srgbCurve(r), g = srgbCurve(g), b = srgbCurve(b);
}

template<class T>
void storeInterleaved(const T* const planes[4], std::size_t count, int channels, T* out) {
    const hn::ScalableTag<T> dt;
    const std::size_t lanes = hn::Lanes(dt);
    std::size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto r = hn::LoadU(dt, planes[0] + i), g = hn::LoadU(dt, planes[1] + i);
        const auto b = hn::LoadU(dt, planes[2] + i);
        if (channels == 3)
            hn::StoreInterleaved3(r, g, b, dt, out + 3 * i);
        else
            hn::StoreInterleaved4(r, g, b, hn::LoadU(dt, planes[3] + i), dt, out + 4 * i);
    }
    for (; i < count; ++i)
        for (int c = 0; c < channels; ++c)
            out[i * std::size_t(channels) + c] = planes[c][i];
}

template<class T>
HWY_INLINE void storeSamples(V v, float scale, T* out) {
    const D d;
    if constexpr (sizeof(T) == 4) {
        hn::StoreU(v, d, out);
    } else {
        // Rounded half up: the values are not negative, so adding a half and cutting off does it.
        const auto whole = hn::ConvertTo(hn::RebindToSigned<D>(),
                                         hn::MulAdd(v, hn::Set(d, scale), hn::Set(d, 0.5f)));
        const hn::Rebind<T, D> dt;
        hn::StoreU(hn::DemoteTo(dt, whole), dt, out);
    }
}

template<class T>
void encodeRow(const EncodeRow& row, const float* const planes[4], std::size_t count, T* out) {
    constexpr std::size_t kBlock = 512;
    const D d;
    const float scale = sizeof(T) == 1 ? 255.0f : 65535.0f;
    const int channels = row.withAlpha ? 4 : 3;
    HWY_ALIGN T samples[4][kBlock];
    const T* const views[4] = {samples[0], samples[1], samples[2], samples[3]};
    for (std::size_t begin = 0; begin < count; begin += kBlock) {
        const std::size_t size = std::min(kBlock, count - begin);
        for (std::size_t i = 0; i < size; i += hn::Lanes(d)) {
            V r = hn::LoadU(d, planes[0] + begin + i), g = hn::LoadU(d, planes[1] + begin + i);
            V b = hn::LoadU(d, planes[2] + begin + i), a = hn::Set(d, 1.0f);
            if (planes[3]) a = hn::LoadU(d, planes[3] + begin + i);
            finish(row, r, g, b, a);
            storeSamples(r, scale, samples[0] + i), storeSamples(g, scale, samples[1] + i);
            storeSamples(b, scale, samples[2] + i), storeSamples(a, scale, samples[3] + i);
        }
        storeInterleaved(views, size, channels, out + begin * std::size_t(channels));
    }
}

#if HWY_TARGET != HWY_SCALAR
HWY_INLINE hn::Vec<hn::RebindToSigned<D>> byteOf(V v) {
    const D d;
    return hn::ConvertTo(hn::RebindToSigned<D>(),
                         hn::MulAdd(v, hn::Set(d, 255.0f), hn::Set(d, 0.5f)));
}

// Bytes: the channels of a pixel are joined in its own lane, which needs no interleaving. Three
// channels are then drawn together, and what a vector writes too much the next one writes over; the
// last ones go through a buffer, for what follows belongs to another tile.
template<bool withAlpha>
void encodeBytes(const EncodeRow& row, const float* const planes[4], std::size_t count,
                 std::uint8_t* out) {
    const D d;
    const hn::RebindToSigned<D> di;
    const hn::Repartition<std::uint8_t, D> bytes;
    constexpr std::size_t channels = withAlpha ? 4 : 3;
    const std::size_t lanes = hn::Lanes(d);
    alignas(16) static constexpr std::uint8_t three[16] = {0,  1,  2,  4,  5, 6, 8, 9,
                                                           10, 12, 13, 14, 3, 3, 3, 3};
    HWY_ALIGN std::int32_t triples[hn::MaxLanes(d)];
    for (std::size_t i = 0; i < lanes; ++i) // three of the four lanes of every block of 16 bytes
        triples[i] = std::int32_t(i < lanes / 4 * 3 ? i / 3 * 4 + i % 3 : 3);
    const auto gather = hn::SetTableIndices(di, triples);
    const auto order = hn::LoadDup128(bytes, three);
    HWY_ALIGN std::uint8_t rest[4 * hn::MaxLanes(d)];
    for (std::size_t i = 0; i < count; i += lanes) {
        V r = hn::LoadU(d, planes[0] + i), g = hn::LoadU(d, planes[1] + i);
        V b = hn::LoadU(d, planes[2] + i), a = hn::Set(d, 1.0f);
        if (planes[3]) a = hn::LoadU(d, planes[3] + i);
        finish(row, r, g, b, a);
        auto pixels =
            hn::Or(hn::Or(byteOf(r), hn::ShiftLeft<8>(byteOf(g))), hn::ShiftLeft<16>(byteOf(b)));
        if constexpr (withAlpha)
            pixels = hn::Or(pixels, hn::ShiftLeft<24>(byteOf(a)));
        else
            pixels = hn::TableLookupLanes(
                hn::BitCast(di, hn::TableLookupBytes(hn::BitCast(bytes, pixels), order)), gather);
        const bool fits = channels * i + 4 * lanes <= channels * count;
        hn::StoreU(hn::BitCast(bytes, pixels), bytes, fits ? out + channels * i : rest);
        if (!fits) std::memcpy(out + channels * i, rest, channels * std::min(lanes, count - i));
    }
}
#endif

void encodeAnyRow(const float* const planes[4], std::size_t count, const BitmapFormat& format,
                  bool withAlpha, std::byte* out) {
    static constexpr decltype(format.toTarget) identity{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    const EncodeRow row{format, withAlpha, format.toTarget != identity};
    if (format.type == SampleType::u8) {
        const auto to = reinterpret_cast<std::uint8_t*>(out);
#if HWY_TARGET == HWY_SCALAR
        encodeRow(row, planes, count, to);
#else
        withAlpha ? encodeBytes<true>(row, planes, count, to)
                  : encodeBytes<false>(row, planes, count, to);
#endif
    } else if (format.type == SampleType::u16)
        encodeRow(row, planes, count, reinterpret_cast<std::uint16_t*>(out));
    else
        encodeRow(row, planes, count, reinterpret_cast<float*>(out));
}

} // namespace kelvaro::rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvaro::rows {

HWY_EXPORT(encodeAnyRow);

void encode(const float* const planes[4], std::size_t count, const BitmapFormat& format,
            bool withAlpha, std::byte* out) {
    HWY_DYNAMIC_DISPATCH(encodeAnyRow)(planes, count, format, withAlpha, out);
}

} // namespace kelvaro::rows
#endif
