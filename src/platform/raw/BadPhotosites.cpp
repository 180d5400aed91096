#include "platform/raw/BadPhotosites.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/raw/BadPhotosites.cpp"
#ifndef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#endif
#include <hwy/foreach_target.h> // must come before highway.h

#include <hwy/highway.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <cstdlib>

HWY_BEFORE_NAMESPACE();
namespace kelvaro {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Whether any of the photosites from … to − 1 of a row stands alone among its 8 neighbours, or
// these and the 4 two steps away. `line` is its first photosite; two rows above and below exist.
bool standsAlone(const std::uint16_t* line, std::ptrdiff_t stride, int from, int to, int neighbours,
                 const StuckLimits& limits) {
    const hn::ScalableTag<std::uint16_t> tag;
    const auto level = hn::Set(tag, limits.black), least = hn::Set(tag, limits.margin);
    const bool isThrice = limits.times == 3;
    const auto zero = hn::Zero(tag);
    auto found = zero;
    // The last four stand two steps away.
    const std::ptrdiff_t around[12] = {-1,          1,          -stride - 1, -stride,
                                       -stride + 1, stride - 1, stride,      stride + 1,
                                       -2,          2,          -2 * stride, 2 * stride};
    const int lanes = int(hn::Lanes(tag));
    for (int x = from; x < to; x += lanes) {
        // The last group is moved back so that it ends with the row.
        const std::uint16_t* p = line + std::min(x, std::max(from, to - lanes));
        auto high = hn::LoadU(tag, p + around[0]);
        auto low = high;
        const auto meet = [&](int first, int end) HWY_ATTR {
            for (int i = first; i < end; ++i) {
                const auto v = hn::LoadU(tag, p + around[i]);
                high = hn::Max(high, v);
                low = hn::Min(low, v);
            }
        };
        const auto value = hn::SaturatedSub(hn::LoadU(tag, p), level);
        const auto alone = [&]() HWY_ATTR {
            const auto brightest = hn::SaturatedSub(high, level),
                       darkest = hn::SaturatedSub(low, level);
            const auto twice = hn::SaturatedAdd(brightest, brightest);
            const auto most = isThrice ? hn::SaturatedAdd(brightest, twice) : twice;
            const auto tooHigh = hn::SaturatedSub(hn::SaturatedSub(value, least), most);
            const auto tooLow = hn::SaturatedSub(
                hn::SaturatedSub(darkest, least),
                hn::SaturatedAdd(hn::SaturatedAdd(value, value), hn::SaturatedAdd(value, value)));
            return hn::Or(tooHigh, tooLow);
        };
        // Few stand out of their own row, and more neighbours never make one stand out.
        meet(1, 2);
        if (neighbours == 12) meet(8, 10);
        if (hn::AllTrue(tag, hn::Eq(alone(), zero))) continue;
        meet(2, neighbours);
        found = hn::Or(found, alone());
    }
    return !hn::AllTrue(tag, hn::Eq(found, zero));
}

} // namespace HWY_NAMESPACE
} // namespace kelvaro
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvaro {

HWY_EXPORT(standsAlone);

namespace {

std::uint16_t meanAround(const MosaicSamples& samples, int row, int column,
                         const std::vector<bool>* bad) {
    unsigned sum = 0, count = 0;
    for (const auto& step : samples.alike(row, column)) {
        const int y = row + step.row, x = column + step.column;
        if (y < 0 || x < 0 || y >= samples.height || x >= samples.width) continue;
        if (bad && (*bad)[std::size_t(y) * std::size_t(samples.width) + std::size_t(x)]) continue;
        sum += samples.first[y * samples.stride + x];
        ++count;
    }
    return count ? std::uint16_t((sum + count / 2) / count)
                 : samples.first[row * samples.stride + column];
}

// Two photosites from the edge at least.
bool isAlone(const MosaicSamples& samples, int row, int column, const StuckLimits& limits) {
    int high = 0, low = 65535;
    const std::uint16_t* p = samples.first + row * samples.stride + column;
    const auto meet = [&](int dy, int dx) {
        const int v = p[dy * samples.stride + dx];
        high = std::max(high, v);
        low = std::min(low, v);
    };
    for (int dy = -1; dy <= 1; ++dy) {
        for (int dx = -1; dx <= 1; ++dx)
            if (dy != 0 || dx != 0) meet(dy, dx);
    }
    for (const auto& step : samples.alike(row, column))
        meet(step.row, step.column);
    const int black = limits.black, value = std::max(0, *p - black);
    return value - limits.margin > limits.times * std::max(0, high - black) ||
           low - black - limits.margin > 4 * value;
}

constexpr int kWidestLanes = 64; // of the widest vectors, and some

void findAlone(const MosaicSamples& samples, int row, const StuckLimits& limits,
               std::vector<BadPoint>& found) {
    constexpr int kPart = 512;
    // Two steps away another colour may stand in the larger pattern.
    const int neighbours = samples.period == 6 ? 8 : 12;
    const std::uint16_t* line = samples.first + row * samples.stride;
    for (int from = 2; from < samples.width - 2; from += kPart) {
        const int to = std::min(from + kPart, samples.width - 2);
        // Short remainders are looked at together with what is before them.
        const int begin = std::min(from, std::max(2, to - kWidestLanes));
        if (!HWY_DYNAMIC_DISPATCH(standsAlone)(line, samples.stride, begin, to, neighbours, limits))
            continue;
        for (int x = from; x < to; ++x) {
            if (isAlone(samples, row, x, limits)) found.push_back({row, x});
        }
    }
}

} // namespace

MosaicSamples::MosaicSamples(std::uint16_t* samples, const SensorImage& sensor)
    : first(samples),
      stride(sensor.stride),
      width(sensor.active.width),
      height(sensor.active.height) {
    if (sensor.layout == SensorLayout::monochrome) {
        steps.push_back({{-1, 0}, {1, 0}, {0, -1}, {0, 1}});
        return;
    }
    period = sensor.filters.period;
    const bool isBayer = sensor.layout == SensorLayout::bayer;
    for (int i = 0; i < period * period; ++i) {
        const int row = sensor.active.top + i / period, column = sensor.active.left + i % period;
        std::vector<Step> alike;
        for (int dy = -2; dy <= 2; ++dy) {
            for (int dx = -2; dx <= 2; ++dx) {
                if (dy == 0 && dx == 0) continue;
                if (isBayer && std::abs(dy) + std::abs(dx) != 2) continue;
                if (isBayer && dy != 0 && dx != 0) continue; // the two greens may differ
                if (sensor.filters.at(row + 6 + dy, column + 6 + dx) ==
                    sensor.filters.at(row, column))
                    alike.push_back({dy, dx});
            }
        }
        steps.push_back(std::move(alike));
    }
}

void findConstants(const MosaicSamples& samples, const std::vector<std::uint16_t>& values,
                   std::vector<BadPoint>& points) {
    // A constant that a good part of the picture has marks nothing.
    const std::size_t most = std::size_t(samples.width) * std::size_t(samples.height) / 50;
    for (const std::uint16_t value : values) {
        std::vector<BadPoint> found;
        for (int y = 0; y < samples.height && found.size() <= most; ++y) {
            const std::uint16_t* row = samples.first + y * samples.stride;
            for (int x = 0; x < samples.width; ++x) {
                if (row[x] == value) found.push_back({y, x});
            }
        }
        if (found.size() <= most) points.insert(points.end(), found.begin(), found.end());
    }
}

void repairListed(const MosaicSamples& samples, const std::vector<BadPoint>& points) {
    if (points.empty()) return;
    std::vector<bool> bad(std::size_t(samples.width) * std::size_t(samples.height));
    const auto isInside = [&](const BadPoint& p) {
        return p.row >= 0 && p.column >= 0 && p.row < samples.height && p.column < samples.width;
    };
    for (const BadPoint& p : points) {
        if (isInside(p))
            bad[std::size_t(p.row) * std::size_t(samples.width) + std::size_t(p.column)] = true;
    }
    for (const BadPoint& p : points) {
        if (isInside(p))
            samples.first[p.row * samples.stride + p.column] =
                meanAround(samples, p.row, p.column, &bad);
    }
}

int repairStuck(const MosaicSamples& samples, const StuckLimits& limits) {
    if (samples.width < kWidestLanes + 4 || samples.height < 5) return 0;
    constexpr int kBand = 64; // rows
    const int bands = (samples.height - 4 + kBand - 1) / kBand;
    std::vector<std::vector<BadPoint>> foundIn;
    foundIn.resize(std::size_t(bands));
    tbb::parallel_for(0, bands, [&](int band) {
        const int top = 2 + band * kBand, bottom = std::min(top + kBand, samples.height - 2);
        for (int row = top; row < bottom; ++row)
            findAlone(samples, row, limits, foundIn[std::size_t(band)]);
    });
    std::vector<BadPoint> found;
    for (const auto& points : foundIn)
        found.insert(found.end(), points.begin(), points.end());
    // A sensor with so many is none: leave the picture as it is.
    if (found.size() > std::size_t(samples.width) * std::size_t(samples.height) / 200) return 0;
    for (const BadPoint& p : found) {
        samples.first[p.row * samples.stride + p.column] =
            meanAround(samples, p.row, p.column, nullptr);
    }
    return int(found.size());
}

} // namespace kelvaro
#endif
