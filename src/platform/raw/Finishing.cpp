#include "platform/raw/Finishing.h"

#include "platform/raw/SplineSmoothing.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/raw/Finishing.cpp"
#ifndef HWY_DISABLED_TARGETS
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#endif
#include <hwy/foreach_target.h> // must come before highway.h

#include <hwy/highway.h>

#include <algorithm>
#include <cmath>

// Plain loops that the compiler turns into vectors of each target. No two rows are the same, or it
// would have to doubt too many pairs of them.
HWY_BEFORE_NAMESPACE();
namespace kelvaro {
namespace HWY_NAMESPACE {

// Linear values to encoded luminance and what red and blue differ from it.
void splitRow(const float* HWY_RESTRICT r, const float* HWY_RESTRICT g, const float* HWY_RESTRICT b,
              float toe, float* HWY_RESTRICT y, float* HWY_RESTRICT u, float* HWY_RESTRICT v,
              std::size_t count) {
    const auto encode = [toe](float x) { return x / std::sqrt(std::abs(x) + toe); };
    for (std::size_t i = 0; i < count; ++i) {
        const float red = encode(r[i]), blue = encode(b[i]);
        const float light = 0.25f * (red + blue) + 0.5f * encode(g[i]);
        y[i] = light;
        u[i] = red - light;
        v[i] = blue - light;
    }
}

// And back.
void joinRow(const float* HWY_RESTRICT y, const float* HWY_RESTRICT u, const float* HWY_RESTRICT v,
             float toe, float* HWY_RESTRICT r, float* HWY_RESTRICT g, float* HWY_RESTRICT b,
             std::size_t count) {
    const auto decode = [toe](float e) {
        return e * (std::abs(e) + std::sqrt(e * e + 4 * toe)) * 0.5f;
    };
    for (std::size_t i = 0; i < count; ++i) {
        r[i] = decode(y[i] + u[i]);
        b[i] = decode(y[i] + v[i]);
        g[i] = decode(y[i] - 0.5f * (u[i] + v[i]));
    }
}

void addRow(const float* HWY_RESTRICT in, float* HWY_RESTRICT sum, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        sum[i] += in[i];
}

// Adds to `sum` the part of the detail (in − smooth) that stands out from `times` the noise.
void shrinkRow(const float* HWY_RESTRICT in, const float* HWY_RESTRICT smooth,
               const float* HWY_RESTRICT y, NoiseLine noise, float times, float* HWY_RESTRICT sum,
               std::size_t count) {
    const float slope = 1 / std::max(1e-6f, noise.lightAt - noise.darkAt);
    for (std::size_t i = 0; i < count; ++i) {
        const float t = std::min(std::max((y[i] - noise.darkAt) * slope, 0.0f), 1.0f);
        const float limit = times * (noise.dark + t * (noise.light - noise.dark));
        const float d = in[i] - smooth[i], square = d * d;
        sum[i] += d * (square / (square + limit * limit + 1e-20f));
    }
}

// In place from smoothed luminance to what is to be added: less where the detail is no more than
// noise, less where it is already strong.
void sharpenRow(const float* HWY_RESTRICT y, NoiseLine noise, float amount,
                float* HWY_RESTRICT smooth, std::size_t count) {
    const float slope = 1 / std::max(1e-6f, noise.lightAt - noise.darkAt);
    for (std::size_t i = 0; i < count; ++i) {
        const float t = std::min(std::max((y[i] - noise.darkAt) * slope, 0.0f), 1.0f);
        const float limit = 2 * (noise.dark + t * (noise.light - noise.dark));
        const float d = y[i] - smooth[i], square = d * d;
        const float seen = square / (square + limit * limit + 1e-20f);
        smooth[i] = amount * d * seen / (1 + 14 * std::abs(d));
    }
}

} // namespace HWY_NAMESPACE
} // namespace kelvaro
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvaro {

HWY_EXPORT(splitRow);
HWY_EXPORT(joinRow);
HWY_EXPORT(addRow);
HWY_EXPORT(shrinkRow);
HWY_EXPORT(sharpenRow);

namespace {

constexpr int kSharpeningBorder = 2, kColourBorder = 14; // 2 (1 + 2 + 4)
constexpr float kDefaultAmount = 1.1f;
// How far a detail must stand out to be kept. The finest noise after a demosaic has many large
// outliers.
constexpr float kNoiseTimes[NoiseModel::kLevels] = {5.0f, 4.0f, 3.0f};
constexpr float kVisible = 0.0015f; // of encoded values; a display step is about 0.004

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

void Finishing::resize(int width) {
    const auto fit = [&](std::vector<float>& rows, int count) {
        const std::size_t size = std::size_t(width) * std::size_t(count);
        if (rows.size() < size) rows.resize(size);
    };
    fit(luminance_, kRows);
    fit(detail_, kRows);
    fit(scratch_, 1);
    for (auto& colour : colour_) {
        for (auto& level : colour.levels)
            fit(level, kRows);
        fit(colour.sum, kRows);
    }
}

// All steps follow each other row by row, so that what one leaves is still in the cache for the
// next; each level lags behind by its reach.
void Finishing::run(float* const (&planes)[3], std::ptrdiff_t stride, int width, int height,
                    const NoiseModel& noise, const FinishingSettings& settings,
                    const ColourOffsets* offsets) {
    if (border(settings) == 0) return;
    resize(width);
    const auto w = std::size_t(width);
    const auto ring = [&](std::vector<float>& v) {
        return RowRing{v.data(), kRows, width, height};
    };
    const RowRing y = ring(luminance_), detail = ring(detail_);
    const bool reduces = settings.reducesColourNoise;
    const int levels = reduces ? NoiseModel::kLevels : 0;
    const int lag = border(settings);
    for (int t = 0; t < height + lag; ++t) {
        const std::ptrdiff_t in = t * stride;
        if (t < height) {
            HWY_DYNAMIC_DISPATCH(splitRow)
            (planes[0] + in, planes[1] + in, planes[2] + in, settings.toe, y.row(t),
             ring(colour_[0].levels[0]).row(t), ring(colour_[1].levels[0]).row(t), w);
            if (offsets) {
                offsets->add(t, width, ring(colour_[0].levels[0]).row(t),
                             ring(colour_[1].levels[0]).row(t));
            }
        }
        const int sharpened = t - kSharpeningBorder;
        if (settings.sharpening > 0 && sharpened >= 0 && sharpened < height) {
            smoothedRow(y, sharpened, 1, scratch_.data(), detail.row(sharpened));
            HWY_DYNAMIC_DISPATCH(sharpenRow)
            (y.row(sharpened), noise.luminance, kDefaultAmount * settings.sharpening,
             detail.row(sharpened), w);
        }
        for (int c = 0; c < 2; ++c) {
            Colour& colour = colour_[c];
            int row = t;
            for (int level = 0; level < levels; ++level) {
                row -= 2 << level;
                if (row < 0 || row >= height) continue;
                const RowRing from = ring(colour.levels[level]),
                              to = ring(colour.levels[level + 1]);
                float* sum = ring(colour.sum).row(row);
                smoothedRow(from, row, 1 << level, scratch_.data(), to.row(row));
                if (level == 0) std::fill_n(sum, w, 0.0f);
                HWY_DYNAMIC_DISPATCH(shrinkRow)
                (from.row(row), to.row(row), y.row(row),
                 noise.colour[std::size_t(c)][std::size_t(level)], kNoiseTimes[level], sum, w);
            }
        }
        const int done = t - lag;
        if (done < 0) continue;
        // The luminance itself stays as it is: rows below are still to be smoothed with it.
        float* light = y.row(done);
        if (settings.sharpening > 0) {
            HWY_DYNAMIC_DISPATCH(addRow)(light, detail.row(done), w);
            light = detail.row(done);
        }
        const float* parts[2];
        for (int c = 0; c < 2; ++c) {
            float* part = ring(colour_[c].levels[levels]).row(done);
            if (reduces) HWY_DYNAMIC_DISPATCH(addRow)(ring(colour_[c].sum).row(done), part, w);
            parts[c] = part;
        }
        const std::ptrdiff_t out = done * stride;
        HWY_DYNAMIC_DISPATCH(joinRow)
        (light, parts[0], parts[1], settings.toe, planes[0] + out, planes[1] + out, planes[2] + out,
         w);
    }
}

void Finishing::sample(const float* const (&planes)[3], std::ptrdiff_t stride, int width,
                       int height, float toe, std::vector<Sample>& samples) {
    // Whole planes, which are small here.
    int rows = 1;
    while (rows < height)
        rows *= 2;
    const auto size = std::size_t(width) * std::size_t(rows);
    std::vector<float> light(size), colours[2], smooth(size), scratch(std::size_t(width), 0.0f);
    const auto ring = [&](std::vector<float>& v) { return RowRing{v.data(), rows, width, height}; };
    const auto smoothen = [&](std::vector<float>& from, int step) {
        for (int row = 0; row < height; ++row)
            smoothedRow(ring(from), row, step, scratch.data(), ring(smooth).row(row));
    };
    for (auto& colour : colours)
        colour.resize(size);
    for (int row = 0; row < height; ++row) {
        const std::ptrdiff_t in = row * stride;
        HWY_DYNAMIC_DISPATCH(splitRow)
        (planes[0] + in, planes[1] + in, planes[2] + in, toe, ring(light).row(row),
         ring(colours[0]).row(row), ring(colours[1]).row(row), std::size_t(width));
    }
    const std::size_t first = samples.size();
    const auto forEach = [&](auto&& use) {
        std::size_t i = first;
        for (int row = kColourBorder; row < height - kColourBorder; row += 2) {
            for (int x = kColourBorder; x < width - kColourBorder; x += 2)
                use(i++, std::size_t(row) * std::size_t(width) + std::size_t(x));
        }
    };
    smoothen(light, 1);
    forEach([&](std::size_t, std::size_t at) {
        samples.push_back({light[at], light[at] - smooth[at], {}});
    });
    for (std::size_t c = 0; c < 2; ++c) {
        for (std::size_t level = 0; level < NoiseModel::kLevels; ++level) {
            smoothen(colours[c], 1 << level);
            forEach([&](std::size_t i, std::size_t at) {
                samples[i].colour[c][level] = colours[c][at] - smooth[at];
            });
            std::swap(colours[c], smooth);
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
