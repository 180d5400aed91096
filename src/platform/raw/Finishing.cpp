#include "platform/raw/Finishing.h"

#include "platform/raw/FalseColour.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

// The levels of colour reach 2 (1 + 2 + 4) pixels, and the coarsest of them, of which every second
// row is made, one more, as do the medians. Even, so that these are the same rows and columns of
// every tile.
constexpr int kSharpeningBorder = 2, kColourBorder = 16;
constexpr float kDefaultAmount = 1.1f;
// How far a detail must stand out to be kept. The finest noise after a demosaic has many large
// outliers.
constexpr float kNoiseTimes[NoiseModel::kLevels] = {5.0f, 4.0f, 3.0f};
constexpr int kRemovedRows = 2;
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
    return settings.sharpening > 0 || settings.removesFalseColour ? kSharpeningBorder : 0;
}

void Finishing::resize(int width) {
    // Rows of one column must not all fall into the same lines of the cache.
    stride_ = (width + 31) / 32 * 32 + 96;
    const auto fit = [&](std::vector<float>& rows, int count) {
        const std::size_t size = std::size_t(stride_) * std::size_t(count);
        if (rows.size() < size) rows.resize(size);
    };
    fit(luminance_, kKeptRows);
    fit(sharpened_, kKeptRows);
    fit(halfLuminance_, 1);
    for (auto& scratch : scratch_) {
        if (scratch.size() < smoothingScratch(width)) scratch.resize(smoothingScratch(width));
    }
    for (auto& smooth : smooth_)
        fit(smooth, 1);
    for (auto& colour : colour_) {
        fit(colour.raw, kRawRows);
        for (std::size_t level = 0; level < NoiseModel::kLevels; ++level)
            fit(colour.levels[level], kLevelRows[level]);
        fit(colour.sum, kKeptRows);
        fit(colour.removed, kRemovedRows);
    }
}

void Finishing::run(const float* const (&planes)[3], std::ptrdiff_t stride, int width, int height,
                    const NoiseModel& noise, const FinishingSettings& settings,
                    const Target& target, const ColourOffsets* offsets) {
    const Job job{width, height, noise, settings, target, offsets, 0};
    for (int row = 0; row < height; ++row) {
        const std::ptrdiff_t in = row * stride;
        addRow(job, row, planes[0] + in, planes[1] + in, planes[2] + in);
    }
}

// All steps follow each other row by row, so that what one leaves is still in the cache for the
// next; each level lags behind by its reach.
void Finishing::addRow(const Job& job, int t, const float* red, const float* green,
                       const float* blue) {
    const auto& settings = job.settings;
    const int lag = border(settings), width = job.width;
    if (lag == 0 || width <= 2 * lag) return;
    if (t == 0) resize(width);
    const auto w = std::size_t(width);
    const auto level0 = [&](int c) { return ring(job, colour_[c].levels[0], kLevelRows[0]); };
    const RowRing y = ring(job, luminance_, kKeptRows),
                  sharpened = ring(job, sharpened_, kKeptRows);
    const bool reduces = settings.reducesColourNoise, sharpens = settings.sharpening > 0;
    const bool calms = settings.removesFalseColour;
    const auto newest = [&](int c) {
        return (calms ? ring(job, colour_[c].raw, kRawRows) : level0(c)).row(t);
    };
    splitColours(red, green, blue, settings.toe, y.row(t), newest(0), newest(1), w);
    if (job.offsets) job.offsets->add(t, width, newest(0), newest(1));
    if (calms && t > 0) takeColours(t - 1, job);
    const int sharp = t - kSharpeningBorder;
    if (sharp >= 0 && sharpens) {
        sharpenLuminance(y.row(sharp), smoothedDown(y, sharp, 1, scratch_[0].data()),
                         job.noise.luminance, kDefaultAmount * settings.sharpening,
                         sharpened.row(sharp), width);
    } else if (sharp >= 0) {
        std::copy_n(y.row(sharp), width, sharpened.row(sharp));
    }
    if (reduces) reduceColourNoise(calms ? t - 1 : t, job);
    const int done = t - lag;
    if (done < lag + job.above) return;
    if (reduces) takeCoarseNoise(done, job);
    const float* parts[2];
    for (int c = 0; c < 2; ++c)
        parts[c] = (reduces ? ring(job, colour_[c].sum, kKeptRows) : level0(c)).row(done) + lag;
    const std::ptrdiff_t out = (done - lag - job.above) * job.target.stride;
    joinColours(sharpened.row(done) + lag, parts[0], parts[1], settings.toe,
                job.target.planes[0] + out, job.target.planes[1] + out, job.target.planes[2] + out,
                w - 2 * std::size_t(lag));
}

// A row, of which the next one is there, without false colour.
void Finishing::takeColours(int t, const Job& job) {
    const auto around = [&](std::vector<float>& v, int rows) {
        const RowRing r = ring(job, v, rows);
        return ThreeRows{r.clamped(t - 1), r.row(t), r.row(t + 1)};
    };
    float* const out[2] = {ring(job, colour_[0].levels[0], kLevelRows[0]).row(t),
                           ring(job, colour_[1].levels[0], kLevelRows[0]).row(t)};
    removeFalseColour(around(luminance_, kKeptRows),
                      {around(colour_[0].raw, kRawRows), around(colour_[1].raw, kRawRows)}, out,
                      job.width);
}

// What the newest row `t` of both colour differences makes possible.
void Finishing::reduceColourNoise(int t, const Job& job) {
    const RowRing y = ring(job, luminance_, kKeptRows);
    int row = t;
    for (std::size_t level = 0; level < 2; ++level) {
        row -= 2 << level;
        if (row < 0) return;
        const int step = 1 << level;
        LevelRows what{};
        what.y = y.row(row);
        for (int c = 0; c < 2; ++c) {
            Colour& colour = colour_[c];
            const RowRing from = ring(job, colour.levels[level], kLevelRows[level]);
            what.in[c] = from.row(row);
            what.down[c] = smoothedDown(from, row, step, scratch_[c].data());
            what.smooth[c] = level == 0 ? ring(job, colour.levels[1], kLevelRows[1]).row(row)
                                        : smooth_[c].data();
            what.parts[c] = ring(job, colour.sum, kKeptRows).row(row);
        }
        shrinkDetails(what, level == 0 ? Details::begun : Details::summed, step,
                      {job.noise.colour[0][level], job.noise.colour[1][level]}, kNoiseTimes[level],
                      job.width);
    }
    if (row % 2 != 0) return;
    for (int c = 0; c < 2; ++c) {
        takeHalf(smooth_[c].data(), halfRing(job, colour_[c].levels[2], kLevelRows[2]).row(row / 2),
                 job.width);
    }
    if (row >= 8) reduceCoarsely(row / 2 - 4, job);
}

// The coarsest level, whose input has no detail that every second pixel would not show. `row`
// counts every second one.
void Finishing::reduceCoarsely(int row, const Job& job) {
    takeHalf(ring(job, luminance_, kKeptRows).row(2 * row), halfLuminance_.data(), job.width);
    LevelRows what{};
    what.y = halfLuminance_.data();
    for (int c = 0; c < 2; ++c) {
        const RowRing from = halfRing(job, colour_[c].levels[2], kLevelRows[2]);
        what.in[c] = from.row(row);
        what.down[c] = smoothedDown(from, row, 2, scratch_[c].data());
        what.parts[c] = halfRing(job, colour_[c].removed, kRemovedRows).row(row);
    }
    shrinkDetails(what, Details::removed, 2, {job.noise.colour[0][2], job.noise.colour[1][2]},
                  kNoiseTimes[2], (job.width + 1) / 2);
}

// Before a row is finished.
void Finishing::takeCoarseNoise(int row, const Job& job) {
    for (auto& colour : colour_) {
        const RowRing removed = halfRing(job, colour.removed, kRemovedRows);
        takeAway(removed.row(row / 2), removed.row((row + 1) / 2),
                 ring(job, colour.sum, kKeptRows).row(row), job.width);
    }
}

void Finishing::sample(const float* const (&planes)[3], std::ptrdiff_t stride, int width,
                       int height, float toe, std::vector<Sample>& samples) {
    // Whole planes, which are small here.
    int rows = 1;
    while (rows < height)
        rows *= 2;
    const auto size = std::size_t(width) * std::size_t(rows);
    std::vector<float> light(size), colours[2], smooth(size), scratch(smoothingScratch(width));
    const auto ring = [&](std::vector<float>& v) {
        return RowRing{v.data(), rows, width, height, width};
    };
    const auto smoothen = [&](std::vector<float>& from, int step) {
        for (int row = 0; row < height; ++row)
            smoothedRow(ring(from), row, step, scratch.data(), ring(smooth).row(row));
    };
    for (auto& colour : colours)
        colour.resize(size);
    for (int row = 0; row < height; ++row) {
        const std::ptrdiff_t in = row * stride;
        splitColours(planes[0] + in, planes[1] + in, planes[2] + in, toe, ring(light).row(row),
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
    // The darker half of the samples, the lighter half, and the middle of each in its place.
    const std::size_t half = samples.size() / 2;
    const auto settle = [&](std::size_t from, std::size_t place, std::size_t to) {
        const auto at = [&](std::size_t i) { return samples.begin() + std::ptrdiff_t(i); };
        std::nth_element(at(from), at(place), at(to),
                         [](const auto& a, const auto& b) { return a.luminance < b.luminance; });
    };
    settle(0, half, samples.size());
    settle(0, half / 2, half);
    settle(half, half + half / 2, samples.size());
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
