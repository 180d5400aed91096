#include "platform/raw/ColourBlotches.h"

#include "platform/raw/SplineSmoothing.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/raw/ColourBlotches.cpp"
#ifndef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#endif
#include <hwy/foreach_target.h> // must come before highway.h

#include <hwy/highway.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

HWY_BEFORE_NAMESPACE();
namespace kelvaro {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Takes from the offsets the part of the detail (in − smooth) that does not stand out from `times`
// the noise. The first level begins them.
template<bool isFirst>
HWY_INLINE void quiet(const float* HWY_RESTRICT in, const float* HWY_RESTRICT smooth,
                      const float* HWY_RESTRICT y, const NoiseLine& noise, float times,
                      float* HWY_RESTRICT offsets, std::size_t count) {
    const float slope = 1 / std::max(1e-6f, noise.lightAt - noise.darkAt);
    const float dark = times * noise.dark, range = times * (noise.light - noise.dark);
    for (std::size_t i = 0; i < count; ++i) {
        const float t = std::min(std::max((y[i] - noise.darkAt) * slope, 0.0f), 1.0f);
        const float limit = dark + t * range;
        const float d = in[i] - smooth[i], noiseSquare = limit * limit;
        const float part = d * (noiseSquare / (d * d + noiseSquare + 1e-20f));
        offsets[i] = isFirst ? -part : offsets[i] - part;
    }
}

void quietRow(const float* in, const float* smooth, const float* y, NoiseLine noise, float times,
              float* offsets, std::size_t count, bool isFirst) {
    if (isFirst)
        quiet<true>(in, smooth, y, noise, times, offsets, count);
    else
        quiet<false>(in, smooth, y, noise, times, offsets, count);
}

// 1 where no channel is brighter than its limit, else 0.
void trustRow(const float* HWY_RESTRICT r, const float* HWY_RESTRICT g, const float* HWY_RESTRICT b,
              const float* limits, std::uint8_t* HWY_RESTRICT trusted, std::size_t count) {
    const float red = limits[0], green = limits[1], blue = limits[2];
    for (std::size_t i = 0; i < count; ++i)
        trusted[i] = std::uint8_t((r[i] <= red) & (g[i] <= green) & (b[i] <= blue));
}

void keepTrusted(const std::uint8_t* HWY_RESTRICT trusted, float* HWY_RESTRICT offsets,
                 std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        offsets[i] *= float(trusted[i]);
}

// Four pixels for each of `count` cells from the second on, interpolated between cell centres.
void spreadRow(const float* cells, float* out, std::size_t count) {
    const hn::ScalableTag<float> tag;
    const auto far = hn::Set(tag, 0.375f), near = hn::Set(tag, 0.125f);
    for (std::size_t k = 0; k < count; k += hn::Lanes(tag)) {
        const auto here = hn::LoadU(tag, cells + k + 1);
        const auto left = hn::LoadU(tag, cells + k) - here,
                   right = hn::LoadU(tag, cells + k + 2) - here;
        hn::StoreInterleaved4(hn::MulAdd(left, far, here), hn::MulAdd(left, near, here),
                              hn::MulAdd(right, near, here), hn::MulAdd(right, far, here), tag,
                              out + 4 * k);
    }
}

void mixRow(const float* HWY_RESTRICT a, const float* HWY_RESTRICT b, float part,
            float* HWY_RESTRICT out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        out[i] = a[i] + part * (b[i] - a[i]);
}

void sumRow(const float* HWY_RESTRICT in, float* HWY_RESTRICT sum, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        sum[i] += in[i];
}

} // namespace HWY_NAMESPACE
} // namespace kelvaro
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvaro {

HWY_EXPORT(quietRow);
HWY_EXPORT(trustRow);
HWY_EXPORT(keepTrusted);
HWY_EXPORT(spreadRow);
HWY_EXPORT(mixRow);
HWY_EXPORT(sumRow);

namespace {

constexpr int kLevels = 4; // details of 4, 8, 16 and 32 pixels
constexpr float kNoiseTimes = 4.0f, kVisible = 0.0015f, kBright = 0.7f;
constexpr int kPadding = 64; // floats that the last vector of a row may touch

// How the noise of a cell's details compares with that of the finishing's coarsest detail, of 4
// pixels. White noise of deviation s leaves 0.086 s in the latter. The mean of 16 pixels has s / 4,
// of which the details keep 0.889, 0.200, 0.086 and 0.041.
constexpr float kNoiseOfLevel[kLevels] = {2.58f, 0.58f, 0.25f, 0.119f};

} // namespace

bool ColourBlotches::areVisible(const NoiseModel& noise) {
    return std::any_of(noise.colour.begin(), noise.colour.end(), [](const auto& levels) {
        return std::max(levels.back().dark, levels.back().light) > kVisible;
    });
}

ColourBlotches::ColourBlotches(const CameraPicture& picture, const ColourStep& colour,
                               const NoiseModel& noise, float toe) {
    const SensorRect& crop = picture.sensor().crop;
    const int photosites = kSide * picture.reduction();
    columns_ = (crop.width + photosites - 1) / photosites;
    rows_ = (crop.height + photosites - 1) / photosites;
    Cells cells = measured(picture, colour, toe);
    for (int which = 0; which < 2; ++which)
        decompose(cells, which, noise);
}

ColourBlotches::Cells ColourBlotches::measured(const CameraPicture& picture,
                                               const ColourStep& colour, float toe) const {
    Cells cells;
    cells.luminance = AlignedFloats(size());
    cells.smoothed = AlignedFloats(size());
    for (AlignedFloats& difference : cells.differences)
        difference = AlignedFloats(size());
    cells.isTrusted.resize(size());
    std::array<float, 3> limits{};
    for (std::size_t i = 0; i < 3; ++i)
        limits[i] = kBright * picture.sensor().saturation[i];
    tbb::parallel_for(0, rows_, [&](int row) {
        std::vector<float> channels[3];
        for (auto& channel : channels)
            channel.resize(std::size_t(columns_ + kPadding));
        float* const c[3] = {channels[0].data(), channels[1].data(), channels[2].data()};
        picture.means(row, kSide, columns_, c);
        const auto first = std::size_t(row * columns_);
        HWY_DYNAMIC_DISPATCH(trustRow)
        (c[0], c[1], c[2], limits.data(), cells.isTrusted.data() + first, std::size_t(columns_));
        colour.run({c[0], c[1], c[2], nullptr}, columns_);
        splitColours(c[0], c[1], c[2], toe, cells.luminance.data() + first,
                     cells.differences[0].data() + first, cells.differences[1].data() + first,
                     std::size_t(columns_));
    });
    return cells;
}

void ColourBlotches::decompose(Cells& cells, std::size_t which, const NoiseModel& noise) {
    AlignedFloats& level = cells.differences[which];
    AlignedFloats& offsets = offsets_[which];
    offsets = AlignedFloats(size());
    AlignedFloats& smoothed = cells.smoothed;
    const auto width = std::size_t(columns_);
    for (int l = 0; l < kLevels; ++l) {
        const RowRing from{level.data(), int(std::bit_ceil(unsigned(rows_))), columns_, rows_,
                           columns_};
        tbb::parallel_for(tbb::blocked_range<int>(0, rows_), [&](const auto& range) {
            std::vector<float> scratch(smoothingScratch(columns_));
            for (int row = range.begin(); row < range.end(); ++row) {
                const auto first = std::size_t(row) * width;
                smoothedRow(from, row, 1 << l, scratch.data(), smoothed.data() + first);
                HWY_DYNAMIC_DISPATCH(quietRow)
                (level.data() + first, smoothed.data() + first, cells.luminance.data() + first,
                 noise.colour[which].back(), kNoiseTimes * kNoiseOfLevel[l], offsets.data() + first,
                 width, l == 0);
                if (l + 1 == kLevels) {
                    HWY_DYNAMIC_DISPATCH(keepTrusted)
                    (cells.isTrusted.data() + first, offsets.data() + first, width);
                }
            }
        });
        std::swap(level, smoothed);
    }
}

void ColourBlotches::add(int row, int column, int count, float* u, float* v) const {
    constexpr int kCells = 136; // at a time; a row of a tile
    const float y = std::clamp((float(row) + 0.5f) / kSide - 0.5f, 0.0f, float(rows_ - 1));
    const int top = int(y), below = std::min(top + 1, rows_ - 1);
    const float part = y - float(top);
    float* const differences[2] = {u, v};
    float cells[kCells + 2 + kPadding] = {}, pixels[kSide * (kCells + kPadding)];
    for (int done = 0; done < count;) {
        const int at = column + done;
        const int first = at >= 0 ? at / kSide : -((kSide - 1 - at) / kSide); // rounded down
        const int skipped = at - kSide * first;
        const int used = std::min(count - done, kSide * kCells - skipped);
        const int wanted = (skipped + used + kSide - 1) / kSide + 2; // one more at each side
        // Those that the picture has; its edges are repeated.
        const int from = std::clamp(1 - first, 0, wanted - 1),
                  to = std::clamp(columns_ + 1 - first, from + 1, wanted);
        const int left = std::clamp(first - 1 + from, 0, columns_ - 1);
        for (int which = 0; which < 2; ++which) {
            const float* o = offsets_[which].data() + left;
            HWY_DYNAMIC_DISPATCH(mixRow)
            (o + top * columns_, o + below * columns_, part, cells + from, std::size_t(to - from));
            std::fill(cells, cells + from, cells[from]);
            std::fill(cells + to, cells + wanted, cells[to - 1]);
            HWY_DYNAMIC_DISPATCH(spreadRow)(cells, pixels, std::size_t(wanted - 2));
            HWY_DYNAMIC_DISPATCH(sumRow)
            (pixels + skipped, differences[which] + done, std::size_t(used));
        }
        done += used;
    }
}

void ColourBlotches::addAlong(double row, double column, double rowStep, double columnStep,
                              int count, float* u, float* v) const {
    for (int i = 0; i < count; ++i) {
        const float y =
            std::clamp(float((row + i * rowStep + 0.5) / kSide - 0.5), 0.0f, float(rows_ - 1));
        const float x = std::clamp(float((column + i * columnStep + 0.5) / kSide - 0.5), 0.0f,
                                   float(columns_ - 1));
        const int top = int(y), left = int(x);
        const auto a = std::size_t(top * columns_ + left);
        const std::size_t right = left + 1 < columns_ ? 1 : 0;
        const auto below = std::size_t(top + 1 < rows_ ? columns_ : 0);
        const float fy = y - float(top), fx = x - float(left);
        const auto at = [&](const AlignedFloats& all) {
            const float* o = all.data();
            const float upper = o[a] + fx * (o[a + right] - o[a]);
            const float lower = o[a + below] + fx * (o[a + below + right] - o[a + below]);
            return upper + fy * (lower - upper);
        };
        u[i] += at(offsets_[0]);
        v[i] += at(offsets_[1]);
    }
}

} // namespace kelvaro
#endif
