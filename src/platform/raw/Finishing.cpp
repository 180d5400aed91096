#include "platform/raw/Finishing.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/raw/Finishing.cpp"
#ifndef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#endif
#include <hwy/foreach_target.h> // must come before highway.h

#include <hwy/highway.h>

#include <algorithm>
#include <cmath>

// Plain loops that the compiler turns into vectors of each target.
HWY_BEFORE_NAMESPACE();
namespace kelvaro {
namespace HWY_NAMESPACE {

void encodeRow(const float* in, float toe, float* out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        out[i] = in[i] / std::sqrt(std::abs(in[i]) + toe);
}

void decodeRow(const float* in, float toe, float* out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const float e = in[i];
        out[i] = e * (std::abs(e) + std::sqrt(e * e + 4 * toe)) * 0.5f;
    }
}

// Luminance of encoded values and what red and blue differ from it.
void splitRow(const float* r, const float* g, const float* b, float* y, float* u, float* v,
              std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        const float light = 0.25f * (r[i] + b[i]) + 0.5f * g[i];
        y[i] = light;
        u[i] = r[i] - light;
        v[i] = b[i] - light;
    }
}

void joinRow(const float* y, const float* u, const float* v, float* r, float* g, float* b,
             std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        r[i] = y[i] + u[i];
        b[i] = y[i] + v[i];
        g[i] = y[i] - 0.5f * (u[i] + v[i]);
    }
}

// B3 spline (1 4 6 4 1) / 16 of five values that lie `step` apart.
void smoothFive(const float* a, const float* b, const float* c, const float* d, const float* e,
                float* out, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        out[i] = 0.0625f * (a[i] + e[i]) + 0.25f * (b[i] + d[i]) + 0.375f * c[i];
    }
}

// Adds to `sum` the part of the detail (in − smooth) that stands out from `times` the noise.
void shrinkRow(const float* in, const float* smooth, const float* y, NoiseLine noise, float times,
               float* sum, std::size_t count) {
    const float slope = 1 / std::max(1e-6f, noise.lightAt - noise.darkAt);
    for (std::size_t i = 0; i < count; ++i) {
        const float t = std::min(std::max((y[i] - noise.darkAt) * slope, 0.0f), 1.0f);
        const float limit = times * (noise.dark + t * (noise.light - noise.dark));
        const float d = in[i] - smooth[i], square = d * d;
        sum[i] += d * (square / (square + limit * limit + 1e-20f));
    }
}

// Luminance with its detail enlarged: less where it is no more than noise, less where it is already
// strong.
void sharpenRow(const float* y, const float* smooth, NoiseLine noise, float amount, float* out,
                std::size_t count) {
    const float slope = 1 / std::max(1e-6f, noise.lightAt - noise.darkAt);
    for (std::size_t i = 0; i < count; ++i) {
        const float t = std::min(std::max((y[i] - noise.darkAt) * slope, 0.0f), 1.0f);
        const float limit = 2 * (noise.dark + t * (noise.light - noise.dark));
        const float d = y[i] - smooth[i], square = d * d;
        const float seen = square / (square + limit * limit + 1e-20f);
        out[i] = amount * d * seen / (1 + 14 * std::abs(d));
    }
}

} // namespace HWY_NAMESPACE
} // namespace kelvaro
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvaro {

HWY_EXPORT(encodeRow);
HWY_EXPORT(decodeRow);
HWY_EXPORT(splitRow);
HWY_EXPORT(joinRow);
HWY_EXPORT(smoothFive);
HWY_EXPORT(shrinkRow);
HWY_EXPORT(sharpenRow);

namespace {

constexpr int kSharpeningBorder = 2, kColourBorder = 14; // 2 (1 + 2 + 4)
constexpr float kDefaultAmount = 1.1f;
constexpr float kNoiseTimes = 3.0f;
constexpr float kVisible = 0.0015f; // of encoded values; a display step is about 0.004

struct Plane {
    float* data;
    int width, height;
    float* row(int y) const { return data + std::ptrdiff_t(y) * width; }
};

// Both directions with `step` between the taps; edges repeat, so that every row is defined.
void smoothed(const Plane& in, const Plane& out, const Plane& scratch, int step) {
    const auto w = std::size_t(in.width);
    for (int y = 0; y < in.height; ++y) {
        const auto at = [&](int k) { return in.row(std::clamp(y + k * step, 0, in.height - 1)); };
        HWY_DYNAMIC_DISPATCH(smoothFive)(at(-2), at(-1), at(0), at(1), at(2), scratch.row(y), w);
    }
    const int reach = 2 * step;
    for (int y = 0; y < in.height; ++y) {
        const float* from = scratch.row(y);
        float* to = out.row(y);
        const auto edge = [&](int x) {
            const auto at = [&](int k) { return from[std::clamp(x + k * step, 0, in.width - 1)]; };
            to[x] = 0.0625f * (at(-2) + at(2)) + 0.25f * (at(-1) + at(1)) + 0.375f * at(0);
        };
        if (in.width <= 2 * reach) {
            for (int x = 0; x < in.width; ++x)
                edge(x);
            continue;
        }
        for (int x = 0; x < reach; ++x)
            edge(x);
        for (int x = in.width - reach; x < in.width; ++x)
            edge(x);
        const float* p = from + reach;
        HWY_DYNAMIC_DISPATCH(smoothFive)
        (p - reach, p - step, p, p + step, p + reach, to + reach, w - 2 * std::size_t(reach));
    }
}

float quantile(std::vector<float>& values, double q) {
    if (values.empty()) return 0;
    const auto at = values.begin() + std::ptrdiff_t(q * double(values.size() - 1));
    std::nth_element(values.begin(), at, values.end());
    return *at;
}

} // namespace

bool NoiseModel::hasColourNoise() const {
    for (const auto& levels : colour) {
        for (const NoiseLine& line : levels) {
            if (std::max(line.dark, line.light) > kVisible) return true;
        }
    }
    return false;
}

int Finishing::border(const FinishingSettings& settings) {
    if (settings.reducesColourNoise) return kColourBorder;
    return settings.sharpening > 0 ? kSharpeningBorder : 0;
}

void Finishing::resize(int width, int height) {
    const auto size = std::size_t(width) * std::size_t(height);
    for (auto* plane : {&encoded_[0], &encoded_[1], &encoded_[2], &luminance_, &colour_[0],
                        &colour_[1], &smooth_, &scratch_, &sum_}) {
        if (plane->size() < size) plane->resize(size);
    }
}

void Finishing::run(float* const (&planes)[3], std::ptrdiff_t stride, int width, int height,
                    const NoiseModel& noise, const FinishingSettings& settings) {
    if (border(settings) == 0) return;
    resize(width, height);
    const auto w = std::size_t(width);
    const auto plane = [&](std::vector<float>& v) { return Plane{v.data(), width, height}; };
    const Plane y = plane(luminance_), colours[2] = {plane(colour_[0]), plane(colour_[1])};
    const Plane smooth = plane(smooth_), scratch = plane(scratch_), sum = plane(sum_);
    for (int row = 0; row < height; ++row) {
        for (int c = 0; c < 3; ++c) {
            HWY_DYNAMIC_DISPATCH(encodeRow)
            (planes[c] + row * stride, settings.toe, plane(encoded_[c]).row(row), w);
        }
        HWY_DYNAMIC_DISPATCH(splitRow)
        (plane(encoded_[0]).row(row), plane(encoded_[1]).row(row), plane(encoded_[2]).row(row),
         y.row(row), colours[0].row(row), colours[1].row(row), w);
    }
    if (settings.reducesColourNoise) {
        for (std::size_t c = 0; c < 2; ++c) {
            std::fill_n(sum_.begin(), w * std::size_t(height), 0.0f);
            for (int level = 0; level < NoiseModel::kLevels; ++level) {
                smoothed(colours[c], smooth, scratch, 1 << level);
                for (int row = 0; row < height; ++row) {
                    HWY_DYNAMIC_DISPATCH(shrinkRow)
                    (colours[c].row(row), smooth.row(row), y.row(row),
                     noise.colour[c][std::size_t(level)], kNoiseTimes, sum.row(row), w);
                }
                std::copy_n(smooth_.begin(), w * std::size_t(height), colour_[c].begin());
            }
            for (std::size_t i = 0; i < w * std::size_t(height); ++i)
                colour_[c][i] += sum_[i];
        }
    }
    if (settings.sharpening > 0) {
        smoothed(y, smooth, scratch, 1);
        for (int row = 0; row < height; ++row) {
            HWY_DYNAMIC_DISPATCH(sharpenRow)
            (y.row(row), smooth.row(row), noise.luminance, kDefaultAmount * settings.sharpening,
             scratch.row(row), w);
        }
        for (std::size_t i = 0; i < w * std::size_t(height); ++i)
            luminance_[i] += scratch_[i];
    }
    for (int row = 0; row < height; ++row) {
        HWY_DYNAMIC_DISPATCH(joinRow)
        (y.row(row), colours[0].row(row), colours[1].row(row), plane(encoded_[0]).row(row),
         plane(encoded_[1]).row(row), plane(encoded_[2]).row(row), w);
        for (int c = 0; c < 3; ++c) {
            HWY_DYNAMIC_DISPATCH(decodeRow)
            (plane(encoded_[c]).row(row), settings.toe, planes[c] + row * stride, w);
        }
    }
}

void Finishing::sample(const float* const (&planes)[3], std::ptrdiff_t stride, int width,
                       int height, float toe, std::vector<Sample>& samples) {
    resize(width, height);
    const auto w = std::size_t(width);
    const auto plane = [&](std::vector<float>& v) { return Plane{v.data(), width, height}; };
    const Plane y = plane(luminance_);
    for (int row = 0; row < height; ++row) {
        for (int c = 0; c < 3; ++c) {
            HWY_DYNAMIC_DISPATCH(encodeRow)
            (planes[c] + row * stride, toe, plane(encoded_[c]).row(row), w);
        }
        HWY_DYNAMIC_DISPATCH(splitRow)
        (plane(encoded_[0]).row(row), plane(encoded_[1]).row(row), plane(encoded_[2]).row(row),
         y.row(row), plane(colour_[0]).row(row), plane(colour_[1]).row(row), w);
    }
    const std::size_t first = samples.size();
    const auto forEach = [&](auto&& use) {
        std::size_t i = first;
        for (int row = kColourBorder; row < height - kColourBorder; row += 2) {
            for (int x = kColourBorder; x < width - kColourBorder; x += 2)
                use(i++, std::size_t(row) * w + std::size_t(x));
        }
    };
    smoothed(y, plane(smooth_), plane(scratch_), 1);
    forEach([&](std::size_t, std::size_t at) {
        samples.push_back({luminance_[at], luminance_[at] - smooth_[at], {}});
    });
    for (std::size_t c = 0; c < 2; ++c) {
        for (std::size_t level = 0; level < NoiseModel::kLevels; ++level) {
            smoothed(plane(colour_[c]), plane(smooth_), plane(scratch_), 1 << level);
            forEach([&](std::size_t i, std::size_t at) {
                samples[i].colour[c][level] = colour_[c][at] - smooth_[at];
            });
            std::copy_n(smooth_.begin(), w * std::size_t(height), colour_[c].begin());
        }
    }
}

NoiseModel noiseModel(std::vector<Finishing::Sample> samples) {
    NoiseModel model;
    if (samples.size() < 1000) return model;
    std::sort(samples.begin(), samples.end(),
              [](const auto& a, const auto& b) { return a.luminance < b.luminance; });
    const std::size_t half = samples.size() / 2;
    // Of the magnitudes of Gaussian noise, a third lie below 0.43 of its standard deviation and
    // half below 0.6745. Luminance has texture everywhere, so its noise is taken from the quieter
    // third.
    const auto deviation = [&](std::size_t from, std::size_t to, double q, double atQuantile,
                               auto&& value) {
        std::vector<float> magnitudes;
        for (std::size_t i = from; i < to; ++i)
            magnitudes.push_back(std::abs(value(samples[i])));
        return float(double(quantile(magnitudes, q)) / atQuantile);
    };
    const auto line = [&](double q, double atQuantile, auto&& value) {
        NoiseLine result;
        result.darkAt = samples[half / 2].luminance;
        result.lightAt = samples[half + half / 2].luminance;
        result.dark = deviation(0, half, q, atQuantile, value);
        result.light = deviation(half, samples.size(), q, atQuantile, value);
        return result;
    };
    model.luminance = line(1.0 / 3, 0.4307, [](const auto& s) { return s.detail; });
    for (std::size_t c = 0; c < 2; ++c) {
        for (std::size_t l = 0; l < NoiseModel::kLevels; ++l) {
            model.colour[c][l] = line(0.5, 0.6745, [=](const auto& s) { return s.colour[c][l]; });
        }
    }
    return model;
}

} // namespace kelvaro
#endif
