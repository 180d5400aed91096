#include "platform/imaging/RowOperations.h"

#include "base/Require.h"

#include <algorithm>
#include <cmath>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/imaging/RowOperations.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kelvaro::rows::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;
using D = hn::ScalableTag<float>;

void fillRow(float* out, float value, std::size_t count) {
    const D d;
    const auto v = hn::Set(d, value);
    for (std::size_t i = 0; i < count; i += hn::Lanes(d))
        hn::StoreU(v, d, out + i);
}

// `kLines` times `kVectors` sums stay in registers, so that each vector of a row is read once for
// all lines.
template<int kLines, int kVectors>
std::size_t addRowBlocks(float* const* out, const float* lowest, std::ptrdiff_t stride,
                         const float* const* weights, int rows, std::size_t count) {
    const D d;
    const std::size_t lanes = hn::Lanes(d), block = kVectors * lanes;
    std::size_t i = 0;
    for (; i + block <= count; i += block) {
        hn::Vec<D> sums[kLines][kVectors];
        for (int line = 0; line < kLines; ++line)
            for (int v = 0; v < kVectors; ++v)
                sums[line][v] = hn::LoadU(d, out[line] + i + std::size_t(v) * lanes);
        const float* from = lowest + i;
        for (int k = 0; k < rows; ++k, from += stride) {
            hn::Vec<D> w[kLines];
            for (int line = 0; line < kLines; ++line)
                w[line] = hn::Set(d, weights[line][k]);
            for (int v = 0; v < kVectors; ++v) {
                const auto value = hn::LoadU(d, from + std::size_t(v) * lanes);
                for (int line = 0; line < kLines; ++line)
                    sums[line][v] = hn::MulAdd(value, w[line], sums[line][v]);
            }
        }
        for (int line = 0; line < kLines; ++line)
            for (int v = 0; v < kVectors; ++v)
                hn::StoreU(sums[line][v], d, out[line] + i + std::size_t(v) * lanes);
    }
    return i;
}

template<int kLines>
void addRowsTo(float* const* out, const float* lowest, std::ptrdiff_t stride,
               const float* const* weights, int rows, std::size_t count) {
    const D d;
    const std::size_t lanes = hn::Lanes(d);
    std::size_t i = addRowBlocks<kLines, 8 / kLines>(out, lowest, stride, weights, rows, count);
    // Not a lane further: the next columns belong to another block.
    const auto one = [&](auto tag, int line, std::size_t at) HWY_ATTR {
        auto sum = hn::LoadU(tag, out[line] + at);
        const float* from = lowest + at;
        for (int k = 0; k < rows; ++k, from += stride)
            sum = hn::MulAdd(hn::LoadU(tag, from), hn::Set(tag, weights[line][k]), sum);
        hn::StoreU(sum, tag, out[line] + at);
    };
    for (int line = 0; line < kLines; ++line) {
        std::size_t at = i;
        for (; at + lanes <= count; at += lanes)
            one(d, line, at);
        for (; at < count; ++at)
            one(hn::CappedTag<float, 1>(), line, at);
    }
}

void addRowsRow(float* const* out, int lines, const float* lowest, std::ptrdiff_t stride,
                const float* const* weights, int rows, std::size_t count) {
    if (lines == 2)
        addRowsTo<2>(out, lowest, stride, weights, rows, count);
    else
        addRowsTo<1>(out, lowest, stride, weights, rows, count);
}

void mixRow(float* out, const float* a, const float* b, float t, std::size_t count) {
    const D d;
    const auto weight = hn::Set(d, t);
    for (std::size_t i = 0; i < count; i += hn::Lanes(d)) {
        const auto va = hn::LoadU(d, a + i);
        hn::StoreU(hn::MulAdd(weight, hn::Sub(hn::LoadU(d, b + i), va), va), d, out + i);
    }
}

// Four lines at a time are interleaved, so that a vector holds one column of them and each weight
// is used for all; four such groups hide the latency of the sums.
void filterLinesRow(float* const* out, const float* const* in, const LineFilter& filter,
                    float* scratch) {
    const D d;
    const hn::CappedTag<float, 4> d4;
    const std::size_t lanes = hn::Lanes(d);
    constexpr int kGroups = kFilterLines / 4;
    HWY_ALIGN float sums[kGroups][4 * kFilterBlock];
    const std::size_t spacing = lineScratch(filter) / kGroups;
    for (std::size_t begin = 0; begin < filter.count; begin += kFilterBlock) {
        const std::size_t end = std::min(begin + kFilterBlock, filter.count);
        const std::int32_t base = filter.first[begin];
        const auto span = std::size_t(filter.first[end - 1] + filter.taps - base);
        for (int g = 0; g < kGroups; ++g) {
            const float* const* from = in + 4 * g;
            for (std::size_t x = 0; x < span; x += lanes)
                hn::StoreInterleaved4(
                    hn::LoadU(d, from[0] + base + x), hn::LoadU(d, from[1] + base + x),
                    hn::LoadU(d, from[2] + base + x), hn::LoadU(d, from[3] + base + x), d,
                    scratch + std::size_t(g) * spacing + 4 * x);
        }
        for (std::size_t i = begin; i < end; ++i) {
            const float* weights = filter.weights + i * std::size_t(filter.taps);
            for (std::size_t lane = 0; lane < 4; lane += hn::Lanes(d4)) {
                const float* from = scratch + 4 * std::size_t(filter.first[i] - base) + lane;
                auto s0 = hn::Zero(d4), s1 = s0, s2 = s0, s3 = s0;
                for (int k = 0; k < filter.taps; ++k, from += 4) {
                    const auto w = hn::Set(d4, weights[k]);
                    s0 = hn::MulAdd(hn::LoadU(d4, from), w, s0);
                    s1 = hn::MulAdd(hn::LoadU(d4, from + spacing), w, s1);
                    s2 = hn::MulAdd(hn::LoadU(d4, from + 2 * spacing), w, s2);
                    s3 = hn::MulAdd(hn::LoadU(d4, from + 3 * spacing), w, s3);
                }
                const std::size_t at = 4 * (i - begin) + lane;
                hn::StoreU(s0, d4, sums[0] + at), hn::StoreU(s1, d4, sums[1] + at);
                hn::StoreU(s2, d4, sums[2] + at), hn::StoreU(s3, d4, sums[3] + at);
            }
        }
        for (int g = 0; g < kGroups; ++g)
            for (std::size_t i = begin; i < end; i += lanes) {
                hn::Vec<D> lines[4];
                hn::LoadInterleaved4(d, sums[g] + 4 * (i - begin), lines[0], lines[1], lines[2],
                                     lines[3]);
                for (int line = 0; line < 4; ++line)
                    if (out[4 * g + line]) hn::StoreU(lines[line], d, out[4 * g + line] + i);
            }
    }
}

void interpolateRow(float* const* out, const float* const* in, int planes,
                    const std::int32_t* index, const float* fraction, std::size_t count) {
    const D d;
    const hn::RebindToSigned<D> di;
    const std::size_t lanes = hn::Lanes(d);
    for (std::size_t i = 0; i < count; i += lanes) {
        const auto position = hn::LoadU(di, index + i);
        const auto t = hn::LoadU(d, fraction + i);
        const std::int32_t base = index[i];
        if (index[i + lanes - 1] + 1 - base < static_cast<std::int32_t>(lanes)) {
            // Enlarging: all neighbours stand in one vector, and two permutes fetch them.
            const auto offset = hn::Sub(position, hn::Set(di, base));
            const auto left = hn::IndicesFromVec(d, offset);
            const auto right = hn::IndicesFromVec(d, hn::Add(offset, hn::Set(di, 1)));
            for (int plane = 0; plane < planes; ++plane) {
                const auto window = hn::LoadU(d, in[plane] + base);
                const auto a = hn::TableLookupLanes(window, left);
                const auto b = hn::TableLookupLanes(window, right);
                hn::StoreU(hn::MulAdd(t, hn::Sub(b, a), a), d, out[plane] + i);
            }
        } else {
            for (int plane = 0; plane < planes; ++plane) {
                const auto a = hn::GatherIndex(d, in[plane], position);
                const auto b = hn::GatherIndex(d, in[plane] + 1, position);
                hn::StoreU(hn::MulAdd(t, hn::Sub(b, a), a), d, out[plane] + i);
            }
        }
    }
}

// Where a stretch of pixels lies: the first of their 4 × 4 neighbours, and how far past the second.
struct CubicPlaces {
    static constexpr std::size_t kCount = 64;
    std::int32_t offset[kCount + 16];
    float u[kCount + 16], v[kCount + 16];
};

void findPlaces(const CubicLine& line, std::ptrdiff_t stride, std::size_t first, std::size_t count,
                CubicPlaces& places) {
    const hn::ScalableTag<double> d;
    const hn::Rebind<float, decltype(d)> df;
    const hn::Rebind<std::int32_t, decltype(d)> di;
    for (std::size_t i = 0; i < count; i += hn::Lanes(d)) {
        const auto x = hn::Add(hn::Iota(d, double(first + i)), hn::Set(d, line.x));
        const auto u = hn::Add(hn::Mul(x, hn::Set(d, line.du)), hn::Set(d, line.u));
        const auto v = hn::Add(hn::Mul(x, hn::Set(d, line.dv)), hn::Set(d, line.v));
        const auto column = hn::Floor(u), row = hn::Floor(v);
        hn::StoreU(hn::DemoteTo(df, hn::Sub(u, column)), df, places.u + i);
        hn::StoreU(hn::DemoteTo(df, hn::Sub(v, row)), df, places.v + i);
        const auto left = hn::Add(column, hn::Set(d, line.originColumn - 1.0));
        const auto top = hn::Add(row, hn::Set(d, line.originRow - 1.0));
        const auto offset = hn::Add(hn::Mul(top, hn::Set(d, double(stride))), left);
        hn::StoreU(hn::DemoteTo(di, offset), di, places.offset + i);
    }
}

#if HWY_TARGET == HWY_SCALAR
// A machine without vectors of four: the same sums one by one.
void cubicRow(float* const* out, const float* const* in, int planes, std::ptrdiff_t stride,
              const CubicLine& line) {
    const auto weights = [](float t, float(&w)[4]) {
        w[0] = ((-0.5f * t + 1) * t - 0.5f) * t;
        w[1] = (1.5f * t - 2.5f) * t * t + 1;
        w[2] = ((-1.5f * t + 2) * t + 0.5f) * t;
        w[3] = (0.5f * t - 0.5f) * t * t;
    };
    CubicPlaces places;
    for (std::size_t i = 0; i < line.count; ++i) {
        findPlaces(line, stride, i, 1, places);
        float across[4], down[4];
        weights(places.u[0], across);
        weights(places.v[0], down);
        for (int plane = 0; plane < planes; ++plane) {
            float sum = 0;
            for (int j = 0; j < 4; ++j)
                for (int k = 0; k < 4; ++k)
                    sum += down[j] * across[k] * in[plane][places.offset[0] + j * stride + k];
            out[plane][i] = sum;
        }
    }
}
#else
// The four pixels of a row are one vector; Catmull and Rom's weights are cubics in the fraction,
// the same for all planes. Four results at a time are summed across and stored together.
void cubicRow(float* const* out, const float* const* in, int planes, std::ptrdiff_t stride,
              const CubicLine& line) {
    const hn::FixedTag<float, 4> d;
    alignas(16) static constexpr float cubic[4][4] = {
        {0, 1, 0, 0}, {-0.5f, 0, 0.5f, 0}, {1, -2.5f, 2, -0.5f}, {-0.5f, 1.5f, -1.5f, 0.5f}};
    const auto c0 = hn::Load(d, cubic[0]), c1 = hn::Load(d, cubic[1]);
    const auto c2 = hn::Load(d, cubic[2]), c3 = hn::Load(d, cubic[3]);
    const auto weights = [&](float t) HWY_ATTR {
        const auto x = hn::Set(d, t);
        return hn::MulAdd(hn::MulAdd(hn::MulAdd(c3, x, c2), x, c1), x, c0);
    };
    const auto neighbourhood = [&](const float* from, auto across, auto down) HWY_ATTR {
        auto sum = hn::Mul(hn::LoadU(d, from), hn::Broadcast<0>(down));
        sum = hn::MulAdd(hn::LoadU(d, from + stride), hn::Broadcast<1>(down), sum);
        sum = hn::MulAdd(hn::LoadU(d, from + 2 * stride), hn::Broadcast<2>(down), sum);
        sum = hn::MulAdd(hn::LoadU(d, from + 3 * stride), hn::Broadcast<3>(down), sum);
        return hn::Mul(sum, across);
    };
    const auto pairs = [&](auto a, auto b) HWY_ATTR { // a0 + a2, b0 + b2, a1 + a3, b1 + b3
        return hn::Add(hn::InterleaveLower(d, a, b), hn::InterleaveUpper(d, a, b));
    };
    CubicPlaces at;
    for (std::size_t begin = 0; begin < line.count; begin += CubicPlaces::kCount) {
        const std::size_t count = std::min(CubicPlaces::kCount, line.count - begin);
        findPlaces(line, stride, begin, count, at);
        for (std::size_t i = count; i < (count + 3) / 4 * 4; ++i) // the last group is full
            at.offset[i] = at.offset[count - 1], at.u[i] = at.u[count - 1],
            at.v[i] = at.v[count - 1];
        for (std::size_t i = 0; i < count; i += 4) {
            const auto u0 = weights(at.u[i]), u1 = weights(at.u[i + 1]);
            const auto u2 = weights(at.u[i + 2]), u3 = weights(at.u[i + 3]);
            const auto v0 = weights(at.v[i]), v1 = weights(at.v[i + 1]);
            const auto v2 = weights(at.v[i + 2]), v3 = weights(at.v[i + 3]);
            for (int plane = 0; plane < planes; ++plane) {
                const float* from = in[plane];
                const auto low = pairs(neighbourhood(from + at.offset[i], u0, v0),
                                       neighbourhood(from + at.offset[i + 1], u1, v1));
                const auto high = pairs(neighbourhood(from + at.offset[i + 2], u2, v2),
                                        neighbourhood(from + at.offset[i + 3], u3, v3));
                hn::StoreU(
                    hn::Add(hn::ConcatLowerLower(d, high, low), hn::ConcatUpperUpper(d, high, low)),
                    d, out[plane] + begin + i);
            }
        }
    }
}
#endif

void maximumRow(float* out, const float* a, const float* b, std::size_t count) {
    const D d;
    for (std::size_t i = 0; i < count; i += hn::Lanes(d)) {
        const auto va = hn::LoadU(d, a + i), vb = hn::LoadU(d, b + i);
        hn::StoreU(hn::IfThenElse(hn::Lt(va, vb), vb, va), d, out + i);
    }
}

void overRow(float* out, const float* top, const float* topAlpha, const float* bottom,
             std::size_t count) {
    const D d;
    for (std::size_t i = 0; i < count; i += hn::Lanes(d)) {
        const auto rest = hn::Sub(hn::Set(d, 1.0f), hn::LoadU(d, topAlpha + i));
        hn::StoreU(hn::MulAdd(hn::LoadU(d, bottom + i), rest, hn::LoadU(d, top + i)), d, out + i);
    }
}

} // namespace kelvaro::rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvaro::rows {

HWY_EXPORT(fillRow);
HWY_EXPORT(addRowsRow);
HWY_EXPORT(mixRow);
HWY_EXPORT(filterLinesRow);
HWY_EXPORT(interpolateRow);
HWY_EXPORT(cubicRow);
HWY_EXPORT(maximumRow);
HWY_EXPORT(overRow);

void fill(float* out, float value, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(fillRow)(out, value, count);
}
void addRows(float* const* out, int lines, const float* lowest, std::ptrdiff_t stride,
             const float* const* weights, int rows, std::size_t count) {
    KELVARO_REQUIRE(lines == 1 || lines == 2);
    HWY_DYNAMIC_DISPATCH(addRowsRow)(out, lines, lowest, stride, weights, rows, count);
}
void mix(float* out, const float* a, const float* b, float t, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(mixRow)(out, a, b, t, count);
}
std::size_t lineScratch(const LineFilter& filter) {
    std::size_t widest = 0;
    for (std::size_t begin = 0; begin < filter.count; begin += kFilterBlock) {
        const std::size_t end = std::min(begin + kFilterBlock, filter.count);
        widest = std::max(widest,
                          std::size_t(filter.first[end - 1] + filter.taps - filter.first[begin]));
    }
    return (widest + kRowGroup) * kFilterLines; // whole vectors are read behind the last column
}
void filterLines(float* const* out, const float* const* in, const LineFilter& filter,
                 float* scratch) {
    HWY_DYNAMIC_DISPATCH(filterLinesRow)(out, in, filter, scratch);
}
void interpolate(float* const* out, const float* const* in, int planes, const std::int32_t* index,
                 const float* fraction, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(interpolateRow)(out, in, planes, index, fraction, count);
}
void cubic(float* const* out, const float* const* in, int planes, std::ptrdiff_t stride,
           const CubicLine& line) {
    HWY_DYNAMIC_DISPATCH(cubicRow)(out, in, planes, stride, line);
}
void maximum(float* out, const float* a, const float* b, std::size_t count) {
    HWY_DYNAMIC_DISPATCH(maximumRow)(out, a, b, count);
}
void over(float* out, const float* top, const float* topAlpha, const float* bottom,
          std::size_t count) {
    HWY_DYNAMIC_DISPATCH(overRow)(out, top, topAlpha, bottom, count);
}

} // namespace kelvaro::rows
#endif
