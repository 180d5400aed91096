#include "platform/raw/PlaceMap.h"

#include <hwy/highway.h>

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

namespace hn = hwy::HWY_NAMESPACE; // what every machine has is enough for four floats

constexpr int kStep = 8;  // columns between two places that are worked out
constexpr int kReach = 3; // of the splines, and what interpolation may differ
constexpr double kSteepest = 2, kFlattest = 0.05; // change of a place from pixel to pixel
constexpr int kProbes = 32;                       // along each side

// The factor by which a ray of this radius is moved.
double factor(const LensWarp& warp, const WarpCurve& curve, double radius) {
    const double r = std::clamp(radius, curve.leastRadius, curve.mostRadius);
    const double x = warp.isFisheye ? std::atan(r) : r;
    double sum = 0;
    for (std::size_t i = curve.radial.size(); i-- > 0;)
        sum = sum * x + curve.radial[i];
    if (warp.isFisheye) return r > 1e-9 ? sum / r : curve.radial[1];
    return warp.isReciprocal ? 1 / sum : sum;
}

// Catmull-Rom weights of the four neighbours of a place, `f` of the way from the second to the
// third.
void splineWeights(float f, float (&w)[4]) {
    const float f2 = f * f, f3 = f2 * f;
    w[0] = 0.5f * (2 * f2 - f3 - f);
    w[1] = 0.5f * (3 * f3 - 5 * f2 + 2);
    w[2] = 0.5f * (4 * f2 - 3 * f3 + f);
    w[3] = 0.5f * (f3 - f2);
}

int scaled(int length, double scale) {
    return std::max(1, int(std::lround(length * scale)));
}

} // namespace

PixelSize pictureSize(const SensorImage& sensor, int reduction) {
    return {scaled(sensor.crop.width / reduction, sensor.columnScale),
            scaled(sensor.crop.height / reduction, sensor.rowScale)};
}

PlaceMap::PlaceMap(const SensorImage& sensor, int reduction)
    : rowScale_(sensor.rowScale),
      columnScale_(sensor.columnScale),
      top_(sensor.crop.top - sensor.active.top),
      left_(sensor.crop.left - sensor.active.left),
      height_(sensor.active.height),
      width_(sensor.active.width),
      channels_(std::clamp(sensor.colours, 1, kMaximumChannels)),
      reduction_(reduction),
      size_(pictureSize(sensor, reduction)) {
    if (sensor.corrections) warps_ = sensor.corrections->warps;
    if (!warps_.empty() && !isSane()) warps_.clear();
}

PlaceMap::Place PlaceMap::warped(const LensWarp& warp, Place place, int channel) const {
    const WarpCurve& curve = warp.planes[std::min(std::size_t(channel), warp.planes.size() - 1)];
    const double cy = warp.centreRow * height_, cx = warp.centreColumn * width_;
    const double unit = std::hypot(std::max(cy, height_ - cy), std::max(cx, width_ - cx));
    const double dy = (place.row - cy) / unit, dx = (place.column - cx) / unit;
    const double r2 = dy * dy + dx * dx, f = factor(warp, curve, std::sqrt(r2));
    const auto [t0, t1] = curve.tangential;
    return {cy + unit * (f * dy + t1 * 2 * dx * dy + t0 * (r2 + 2 * dy * dy)),
            cx + unit * (f * dx + t0 * 2 * dx * dy + t1 * (r2 + 2 * dx * dx))};
}

PlaceMap::Place PlaceMap::at(double row, double column, int channel) const {
    Place place{(row + 0.5) / rowScale_, (column + 0.5) / columnScale_};
    if (!warps_.empty()) {
        // In photosites of the active area.
        place = {top_ + reduction_ * place.row, left_ + reduction_ * place.column};
        for (auto warp = warps_.rbegin(); warp != warps_.rend(); ++warp)
            place = warped(*warp, place, channel);
        place = {(place.row - top_) / reduction_, (place.column - left_) / reduction_};
    }
    return {place.row - 0.5, place.column - 0.5};
}

bool PlaceMap::isSane() const {
    const double down = double(size_.height) / kProbes, across = double(size_.width) / kProbes;
    for (int channel = 0; channel < channels_; ++channel) {
        for (int y = 0; y <= kProbes; ++y) {
            for (int x = 0; x <= kProbes; ++x) {
                const Place here = at(y * down, x * across, channel);
                const Place below = at((y + 1) * down, x * across, channel),
                            right = at(y * down, (x + 1) * across, channel);
                const auto isNear = [&](const Place& other, double distance) {
                    const double moved =
                        std::hypot(other.row - here.row, other.column - here.column);
                    return moved < kSteepest * distance && moved > kFlattest * distance;
                };
                if (!isNear(below, down) || !isNear(right, across)) return false;
            }
        }
    }
    return true;
}

void PlaceMap::row(int row, int column, int count, int channel, float* rows, float* columns) const {
    for (int x = column; x < column + count;) {
        const int from = x - ((x % kStep) + kStep) % kStep, to = from + kStep;
        const Place a = at(row, from, channel), b = at(row, to, channel);
        for (; x < std::min(to, column + count); ++x) {
            const double f = double(x - from) / kStep;
            rows[x - column] = float(std::lerp(a.row, b.row, f));
            columns[x - column] = float(std::lerp(a.column, b.column, f));
        }
    }
}

SensorRect PlaceMap::source(const SensorRect& tile) const {
    // Polynomials may do anything between the probes: `min` and `max` in this order drop NaN.
    const auto bounded = [](double v) { return std::max(-1e6, std::min(v, 1e6)); };
    double top = 1e6, left = 1e6, bottom = -1e6, right = -1e6;
    for (int channel = 0; channel < channels_; ++channel) {
        for (int y = tile.top; y < tile.bottom() + kStep; y += kStep) {
            for (int x = tile.left; x < tile.right() + kStep; x += kStep) {
                const Place p = at(std::min(y, tile.bottom()), std::min(x, tile.right()), channel);
                const double row = bounded(p.row), column = bounded(p.column);
                top = std::min(top, row), bottom = std::max(bottom, row);
                left = std::min(left, column), right = std::max(right, column);
            }
        }
    }
    const int firstRow = int(std::floor(top)) - kReach,
              firstColumn = int(std::floor(left)) - kReach;
    const int most = int(kSteepest) * (tile.width + tile.height) + 64;
    return {firstColumn, firstRow, std::min(most, int(std::ceil(right)) + kReach + 1 - firstColumn),
            std::min(most, int(std::ceil(bottom)) + kReach + 1 - firstRow)};
}

bool PlaceMap::isShared() const {
    return std::all_of(warps_.begin(), warps_.end(),
                       [](const LensWarp& warp) { return warp.planes.size() == 1; });
}

void sampleRow(const SourcePlanes& planes, const float* rows, const float* columns, int count,
               float* const* out) {
    [[maybe_unused]] const hn::Full128<float> tag; // the four neighbours of one row
    const SensorRect& area = planes.area;
    const auto lastRow = float(area.height - 3), lastColumn = float(area.width - 3);
    for (int i = 0; i < count; ++i) {
        // In this order they drop NaN.
        const float y = std::max(1.0f, std::min(rows[i] - float(area.top), lastRow));
        const float x = std::max(1.0f, std::min(columns[i] - float(area.left), lastColumn));
        const int top = int(y), left = int(x);
        float down[4];
        HWY_ALIGN float across[4];
        splineWeights(y - float(top), down);
        splineWeights(x - float(left), across);
#if HWY_TARGET == HWY_SCALAR // has no four lanes
        for (int c = 0; c < planes.count; ++c) {
            const float* from = planes.first[c] + (top - 1) * planes.stride + left - 1;
            float sum = 0;
            for (int r = 0; r < 4; ++r)
                for (int k = 0; k < 4; ++k)
                    sum += from[r * planes.stride + k] * down[r] * across[k];
            out[c][i] = sum;
        }
#else
        const auto weights = hn::Load(tag, across);
        const std::ptrdiff_t at = (top - 1) * planes.stride + left - 1;
        for (int c = 0; c < planes.count; ++c) {
            const float* from = planes.first[c] + at;
            auto sum = hn::Mul(hn::LoadU(tag, from), hn::Set(tag, down[0]));
            for (int r = 1; r < 4; ++r) {
                sum = hn::Add(
                    sum, hn::Mul(hn::LoadU(tag, from + r * planes.stride), hn::Set(tag, down[r])));
            }
            out[c][i] = hn::GetLane(hn::SumOfLanes(tag, hn::Mul(sum, weights)));
        }
#endif
    }
}

} // namespace kelvaro
