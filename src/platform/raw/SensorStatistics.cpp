#include "platform/raw/SensorStatistics.h"

#include <tbb/enumerable_thread_specific.h>
#include <tbb/parallel_for.h>

#include <algorithm>
#include <cmath>
#include <functional>

namespace kelvaro {

namespace {

constexpr std::size_t kLevels = 65536;
constexpr int kRowsTaken = 2, kRowsStep = 8; // whole pairs of rows, so that every filter is met

// Of the magnitudes of Gaussian noise a third lie below 0.4307 of its standard deviation.
float deviation(std::vector<float>& magnitudes) {
    if (magnitudes.size() < 50) return 0;
    const auto third = magnitudes.begin() + std::ptrdiff_t(magnitudes.size() / 3);
    std::nth_element(magnitudes.begin(), third, magnitudes.end());
    return *third / 0.4307f;
}

using Histograms = std::array<std::vector<std::uint32_t>, 3>;

void countRow(const SensorImage& sensor, int row, Histograms& histograms) {
    const std::uint16_t* line = sensor.integers + row * sensor.stride;
    const int left = sensor.active.left, right = sensor.active.right();
    if (sensor.layout == SensorLayout::fullColour) {
        for (int x = left; x < right; ++x) {
            for (std::size_t c = 0; c < 3 && int(c) < sensor.channels; ++c)
                ++histograms[c][line[x * sensor.channels + int(c)]];
        }
        return;
    }
    const int period = sensor.filters.period;
    for (int first = left; first < std::min(left + period, right); ++first) {
        auto* histogram = histograms[std::size_t(sensor.filters.at(row, first))].data();
        for (int x = first; x < right; x += period)
            ++histogram[line[x]];
    }
}

} // namespace

SensorStatistics measure(const SensorImage& sensor) {
    SensorStatistics statistics;
    if (!sensor.integers || sensor.layout == SensorLayout::monochrome) return statistics;
    const bool isLargePattern =
        sensor.layout != SensorLayout::fullColour && sensor.filters.period == 6;
    const int step = isLargePattern ? 3 * kRowsStep : kRowsStep;
    const int taken = isLargePattern ? 6 : kRowsTaken;
    const int groups = (sensor.active.height + step - 1) / step;
    // Histograms of each thread, which take longer to clear than many rows to read.
    const std::vector<std::uint32_t> none(kLevels);
    tbb::enumerable_thread_specific<Histograms> counted(Histograms{none, none, none});
    tbb::parallel_for(0, groups, [&](int group) {
        Histograms& histograms = counted.local();
        const int end = std::min(group * step + taken, sensor.active.height);
        for (int y = group * step; y < end; ++y)
            countRow(sensor, sensor.active.top + y, histograms);
    });
    statistics.histograms = Histograms{none, none, none};
    for (const Histograms& part : counted) {
        for (std::size_t c = 0; c < 3; ++c) {
            auto& sum = statistics.histograms[c];
            std::transform(sum.begin(), sum.end(), part[c].begin(), sum.begin(), std::plus<>());
        }
    }
    for (std::size_t c = 0; c < 3; ++c) {
        for (const std::uint32_t n : statistics.histograms[c])
            statistics.counts[c] += n;
    }
    return statistics;
}

std::array<float, kMaximumChannels> saturationLevels(const SensorImage& sensor,
                                                     const SensorStatistics& statistics) {
    auto levels = sensor.white;
    for (std::size_t c = 0; c < 3; ++c) {
        const auto& histogram = statistics.histograms[c];
        if (histogram.empty() || statistics.counts[c] == 0) continue;
        // The fullest level near the top, whose own noise and rounding may spread it a little.
        std::size_t top = kLevels - 1;
        while (top > 0 && histogram[top] == 0)
            --top;
        const float black = *std::max_element(sensor.black.table.begin(), sensor.black.table.end());
        const float range = sensor.white[c] - black;
        if (!(float(top) > black + 0.8f * range)) continue;
        const auto from = std::size_t(std::max(0.0f, float(top) - 0.02f * range));
        const auto peak = std::max_element(histogram.begin() + std::ptrdiff_t(from),
                                           histogram.begin() + std::ptrdiff_t(top) + 1);
        const auto level = float(peak - histogram.begin());
        // Below the peak no level is nearly as full when the peak is a cut.
        const auto width = std::size_t(std::max(16.0f, 0.02f * range));
        std::uint64_t below = 0;
        const auto end = std::size_t(peak - histogram.begin());
        const std::size_t begin = end > width ? end - width : 0;
        for (std::size_t i = begin; i < end; ++i)
            below += histogram[i];
        const double mean = double(below) / double(std::max<std::size_t>(1, end - begin));
        const bool isCut = *peak >= 16 && double(*peak) >= 2e-5 * double(statistics.counts[c]) &&
                           double(*peak) > 8 * mean;
        if (isCut) levels[c] = std::min(levels[c], level);
    }
    return levels;
}

float greenRatio(const SensorImage& sensor, const MosaicReader& reader) {
    constexpr int kRows = 96;
    constexpr float kDark = 0.02f, kBright = 0.7f, kSmooth = 0.08f;
    constexpr float kAgree = 0.005f, kImplausible = 0.1f;
    const SensorRect& active = sensor.active;
    const int pairs = active.width / 2 - 1;
    if (pairs < 8 || active.height < 8) return 1;
    const BayerPhase phase = reader.phase();
    std::vector<float> line[3][2];
    for (auto& row : line) {
        for (auto& half : row)
            half.resize(std::size_t(pairs));
    }
    std::vector<float> ratios;
    for (int i = 0; i < kRows; ++i) {
        // A row of red with the rows of blue above and below it.
        int row = active.top + 1 + int((i + 0.5) * (active.height - 4) / kRows);
        row += (row ^ phase.redRow) & 1;
        for (int k = 0; k < 3; ++k)
            reader.split(row - 1 + k, active.left, pairs, line[k][0].data(), line[k][1].data());
        const auto inRed = std::size_t((phase.redColumn + active.left + 1) & 1);
        const std::size_t inBlue = 1 - inRed;
        for (std::size_t x = 1; x + 1 < std::size_t(pairs); x += 3) {
            // The four greens of the blue rows around one of the red row.
            const std::size_t left = inRed == 0 ? x - 1 : x;
            const float here = line[1][inRed][x];
            const float a = line[0][inBlue][left], b = line[0][inBlue][left + 1],
                        c = line[2][inBlue][left], d = line[2][inBlue][left + 1];
            const float mean = 0.25f * (a + b + c + d);
            const float spread = std::max({a, b, c, d}) - std::min({a, b, c, d});
            if (mean < kDark || mean > kBright || spread > kSmooth * mean) continue;
            ratios.push_back(here / mean);
        }
    }
    if (ratios.size() < 400) return 1;
    const auto middle = ratios.begin() + std::ptrdiff_t(ratios.size() / 2);
    std::nth_element(ratios.begin(), middle, ratios.end());
    const float off = std::abs(*middle - 1);
    return off > kAgree && off < kImplausible ? *middle : 1.0f;
}

float darkNoise(const SensorImage& sensor, const MosaicReader& reader) {
    constexpr int kRows = 48;
    constexpr float kRootSix = 2.4494897f; // of a difference 1, −2, 1
    const bool isMosaic =
        sensor.layout == SensorLayout::bayer || sensor.layout == SensorLayout::xTrans;
    const int step = isMosaic ? sensor.filters.period : 1;
    const int channels = isMosaic ? 1 : std::min(sensor.colours, sensor.channels);
    const int width = sensor.active.width;
    if (width < 3 * step) return 0;
    struct Pair {
        float level, difference;
    };
    std::array<std::vector<Pair>, kMaximumChannels> pairs;
    std::vector<float> line(std::size_t(width), 0.0f);
    for (int i = 0; i < kRows; ++i) {
        const int row = sensor.active.top + int((i + 0.5) * sensor.active.height / kRows);
        for (int c = 0; c < channels; ++c) {
            reader.row(row, sensor.active.left, width, c, line.data());
            for (int x = 0; x + 2 * step < width; x += 5) {
                const float a = line[std::size_t(x)], b = line[std::size_t(x + step)],
                            d = line[std::size_t(x + 2 * step)];
                const int channel = isMosaic ? sensor.filters.at(row, sensor.active.left + x) : c;
                pairs[std::size_t(channel)].push_back(
                    {(a + b + d) / 3, std::abs(a - 2 * b + d) / kRootSix});
            }
        }
    }
    float largest = 0;
    for (auto& channel : pairs) {
        const auto half = channel.begin() + std::ptrdiff_t(channel.size() / 2);
        std::nth_element(channel.begin(), half, channel.end(),
                         [](const Pair& a, const Pair& b) { return a.level < b.level; });
        std::vector<float> magnitudes;
        for (auto at = channel.begin(); at != half; ++at)
            magnitudes.push_back(at->difference);
        largest = std::max(largest, deviation(magnitudes));
    }
    return std::min(largest, 0.1f);
}

} // namespace kelvaro
