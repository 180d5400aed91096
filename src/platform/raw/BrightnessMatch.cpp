#include "platform/raw/BrightnessMatch.h"

#include "platform/raw/MosaicReader.h"
#include "platform/raw/PreviewLight.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

constexpr double kLimitStops = 1.5;
// Darker than any picture: bars that fill a preview up to another shape.
constexpr float kBar = 0.0008f;
constexpr float kMidFrom = 0.02f, kMidTo = 0.7f;

} // namespace

std::vector<float> previewLuminance(const DecodedBitmap& preview) {
    std::vector<float> values;
    for (int y = 4; y < preview.pixels.size.height; y += 8) {
        for (int x = 4; x < preview.pixels.size.width; x += 8) {
            const float light = luminanceOf(lightAt(preview, x, y));
            if (light > kBar) values.push_back(light);
        }
    }
    return values;
}

std::vector<float> sensorLuminance(const SensorImage& sensor) {
    constexpr int kRows = 64;
    const MosaicReader reader(sensor);
    const SensorRect& crop = sensor.crop;
    const int pairs = crop.width / 2;
    std::vector<float> values, site[4];
    for (auto& line : site)
        line.resize(std::size_t(std::max(1, 2 * pairs)));
    const auto& m = sensor.colour.toWorking;
    const auto add = [&](const float(&v)[kMaximumChannels]) {
        std::array<float, 3> rgb{};
        for (std::size_t i = 0; i < 3; ++i) {
            for (std::size_t c = 0; c < kMaximumChannels; ++c)
                rgb[i] += float(m[i][c]) * v[c];
        }
        values.push_back(luminanceOf(rgb));
    };
    const bool isBayer = sensor.layout == SensorLayout::bayer;
    if (!isBayer && sensor.layout == SensorLayout::xTrans) return values;
    for (int i = 0; i < kRows; ++i) {
        const int row = crop.top + int((i + 0.5) * crop.height / kRows);
        if (isBayer) {
            const BayerPhase phase = reader.phase();
            const int r = (phase.redRow + row) & 1, c = (phase.redColumn + crop.left) & 1;
            for (int k = 0; k < 2; ++k) {
                reader.split(row + k, crop.left, pairs, site[std::size_t(2 * k)].data(),
                             site[std::size_t(2 * k + 1)].data());
            }
            const auto at = [&](int y, int x, int k) {
                return site[std::size_t(2 * y + x)][std::size_t(k)];
            };
            for (int k = 2; k < pairs; k += 4) {
                add({at(r, c, k), 0.5f * (at(r, 1 - c, k) + at(1 - r, c, k)), at(1 - r, 1 - c, k),
                     0});
            }
            continue;
        }
        const int colours = std::min({sensor.colours, sensor.channels, kMaximumChannels});
        for (int c = 0; c < colours; ++c) {
            reader.row(row, crop.left, 2 * pairs, c, site[std::size_t(c)].data());
        }
        for (int x = 4; x < 2 * pairs; x += 8) {
            float v[kMaximumChannels] = {};
            for (int c = 0; c < colours; ++c)
                v[c] = site[std::size_t(c)][std::size_t(x)];
            add(v);
        }
    }
    return values;
}

std::optional<double> matchedStops(std::vector<float> preview, std::vector<float> sensor) {
    if (preview.size() < 100 || sensor.size() < 100) return std::nullopt;
    std::sort(preview.begin(), preview.end());
    std::sort(sensor.begin(), sensor.end());
    const auto quantile = [](const std::vector<float>& v, double q) {
        return v[std::size_t(q * double(v.size() - 1))];
    };
    std::vector<double> stops;
    for (double q = 0.2; q < 0.805; q += 0.05) {
        const float wanted = quantile(preview, q), have = quantile(sensor, q);
        if (wanted < kMidFrom || wanted > kMidTo || !(have > 1e-4f)) continue;
        stops.push_back(std::log2(double(wanted) / double(have)));
    }
    if (stops.size() < 4) return std::nullopt;
    std::nth_element(stops.begin(), stops.begin() + std::ptrdiff_t(stops.size() / 2), stops.end());
    return std::clamp(stops[stops.size() / 2], -kLimitStops, kLimitStops);
}

} // namespace kelvaro
