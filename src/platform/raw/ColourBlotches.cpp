#include "platform/raw/ColourBlotches.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

constexpr int kLevels = 4; // details of 4, 8, 16 and 32 pixels
constexpr float kNoiseTimes = 4.0f, kVisible = 0.0015f, kBright = 0.7f;
constexpr int kPadding = 64; // floats that the last vector of a row may touch

// How the noise of a cell's details compares with that of the finishing's coarsest detail, of 4
// pixels. White noise of deviation s leaves 0.086 s in the latter. The mean of 16 pixels has s / 4,
// of which the details keep 0.889, 0.200, 0.086 and 0.041.
constexpr float kNoiseOfLevel[kLevels] = {2.58f, 0.58f, 0.25f, 0.119f};

float noiseAt(const NoiseLine& line, float luminance) {
    const float t = (luminance - line.darkAt) / std::max(1e-6f, line.lightAt - line.darkAt);
    return line.dark + std::clamp(t, 0.0f, 1.0f) * (line.light - line.dark);
}

// B3 spline over a grid with `step` between the taps; edges repeat.
void smooth(const std::vector<float>& in, int columns, int rows, int step,
            std::vector<float>& scratch, std::vector<float>& out) {
    constexpr float kTaps[5] = {0.0625f, 0.25f, 0.375f, 0.25f, 0.0625f};
    const auto pass = [&](const std::vector<float>& from, std::vector<float>& to, bool isDown) {
        tbb::parallel_for(0, rows, [&](int y) {
            for (int x = 0; x < columns; ++x) {
                float sum = 0;
                for (int k = -2; k <= 2; ++k) {
                    const int r = isDown ? std::clamp(y + k * step, 0, rows - 1) : y;
                    const int c = isDown ? x : std::clamp(x + k * step, 0, columns - 1);
                    sum += kTaps[k + 2] * from[std::size_t(r * columns + c)];
                }
                to[std::size_t(y * columns + x)] = sum;
            }
        });
    };
    pass(in, scratch, true);
    pass(scratch, out, false);
}

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
    const auto size = std::size_t(columns_) * std::size_t(rows_);
    cells.luminance.resize(size);
    cells.differences[0].resize(size);
    cells.differences[1].resize(size);
    std::vector<std::uint8_t> bright(size); // bits of one word must not be shared by threads
    tbb::parallel_for(0, rows_, [&](int row) {
        std::vector<float> channels[3];
        for (auto& channel : channels)
            channel.resize(std::size_t(columns_ + kPadding));
        float* const c[3] = {channels[0].data(), channels[1].data(), channels[2].data()};
        picture.means(row, kSide, columns_, c);
        const auto first = std::size_t(row * columns_);
        for (std::size_t x = 0; x < std::size_t(columns_); ++x) {
            for (std::size_t i = 0; i < 3; ++i)
                bright[first + x] |= c[i][x] > kBright * picture.sensor().saturation[i];
        }
        colour.run({c[0], c[1], c[2], nullptr}, columns_);
        const auto encode = [toe](float v) { return v / std::sqrt(std::abs(v) + toe); };
        for (std::size_t x = 0; x < std::size_t(columns_); ++x) {
            const float red = encode(c[0][x]), blue = encode(c[2][x]);
            const float light = 0.25f * (red + blue) + 0.5f * encode(c[1][x]);
            cells.luminance[first + x] = light;
            cells.differences[0][first + x] = red - light;
            cells.differences[1][first + x] = blue - light;
        }
    });
    cells.isBright.assign(bright.begin(), bright.end());
    return cells;
}

void ColourBlotches::decompose(Cells& cells, int which, const NoiseModel& noise) {
    std::vector<float>& level = cells.differences[which];
    std::vector<float>& offsets = offsets_[which];
    offsets.assign(level.size(), 0);
    std::vector<float> smoothed(level.size()), scratch(level.size());
    const NoiseLine& line = noise.colour[std::size_t(which)].back();
    for (int l = 0; l < kLevels; ++l) {
        smooth(level, columns_, rows_, 1 << l, scratch, smoothed);
        for (std::size_t i = 0; i < level.size(); ++i) {
            const float limit = kNoiseTimes * kNoiseOfLevel[l] * noiseAt(line, cells.luminance[i]);
            const float d = level[i] - smoothed[i], square = d * d, noiseSquare = limit * limit;
            offsets[i] -= d * (noiseSquare / (square + noiseSquare + 1e-20f));
        }
        level.swap(smoothed);
    }
    for (std::size_t i = 0; i < offsets.size(); ++i) {
        if (cells.isBright[i]) offsets[i] = 0;
    }
}

void ColourBlotches::add(double row, double column, double rowStep, double columnStep, int count,
                         float* u, float* v) const {
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
        const auto at = [&](const std::vector<float>& o) {
            const float upper = o[a] + fx * (o[a + right] - o[a]);
            const float lower = o[a + below] + fx * (o[a + below + right] - o[a + below]);
            return upper + fy * (lower - upper);
        };
        u[i] += at(offsets_[0]);
        v[i] += at(offsets_[1]);
    }
}

} // namespace kelvaro
