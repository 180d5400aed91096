#include "platform/raw/Highlights.h"

#include "platform/raw/QuadRows.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace kelvaro {

namespace {

constexpr float kDoubtFrom = 0.90f, kDoubtTo = 0.985f; // of the saturation
constexpr int kGroup = 16;
constexpr std::array<float, 3> kNeutral{1.0f / 3, 1.0f / 3, 1.0f / 3};

} // namespace

HighlightRecovery::HighlightRecovery(const std::array<float, 3>& saturation,
                                     const LocalColour* surroundings)
    : top_(*std::max_element(saturation.begin(), saturation.end())), surroundings_(surroundings) {
    for (std::size_t c = 0; c < 3; ++c) {
        start_[c] = kDoubtFrom * saturation[c];
        slope_[c] = 1 / ((kDoubtTo - kDoubtFrom) * saturation[c]);
    }
}

void HighlightRecovery::run(float* const (&rgb)[3], int count, float row, float column,
                            float step) const {
    for (int from = 0; from < count; from += kGroup) {
        const int to = std::min(from + kGroup, count);
        int bright = 0;
        for (int x = from; x < to; ++x) {
            const int above = int(rgb[0][x] > start_[0]) | int(rgb[1][x] > start_[1]) |
                              int(rgb[2][x] > start_[2]);
            bright |= above;
        }
        if (!bright) continue;
        for (int x = from; x < to; ++x) {
            float v[3] = {rgb[0][x], rgb[1][x], rgb[2][x]};
            recover(v, row, column + step * float(x));
            for (int c = 0; c < 3; ++c)
                rgb[c][x] = v[c];
        }
    }
}

void HighlightRecovery::recover(float (&v)[3], float row, float column) const {
    float doubt[3], doubts = 0;
    for (std::size_t c = 0; c < 3; ++c) {
        const float t = std::min(std::max((v[c] - start_[c]) * slope_[c], 0.0f), 1.0f);
        doubt[c] = t * t * (3 - 2 * t);
        doubts += doubt[c];
    }
    if (doubts == 0) return;
    auto colour = surroundings_ ? surroundings_->at(row, column) : kNeutral;
    // The fewer channels are left, the less of the surroundings' colour is believed.
    const float fade = std::min(std::max((doubts - 1) / 2, 0.0f), 1.0f);
    for (float& part : colour)
        part += fade * (1.0f / 3 - part);
    // How bright a surface of this colour must be to give the sound channels.
    float sound = 1e-3f, sum = 1e-3f * top_;
    for (std::size_t c = 0; c < 3; ++c) {
        sound += (1 - doubt[c]) * colour[c];
        sum += (1 - doubt[c]) * std::max(v[c], 0.0f);
    }
    float brightness = sum / sound;
    // Nor can it be darker than what saturated channels show at least: with two of them gone, the
    // third alone would make yellow or sky pink.
    for (std::size_t c = 0; c < 3; ++c)
        brightness = std::max(brightness, doubt[c] * v[c] / std::max(colour[c], 0.02f));
    const float all = std::min({doubt[0], doubt[1], doubt[2]});
    float rebuilt[3];
    for (std::size_t c = 0; c < 3; ++c)
        rebuilt[c] = brightness * colour[c];
    // Magenta highlights are nearly always a wrong guess: green is at least the squared mean root
    // of sound red and blue.
    const float red = 1 - doubt[0], blue = 1 - doubt[2];
    const float roots =
        red * std::sqrt(std::max(v[0], 0.0f)) + blue * std::sqrt(std::max(v[2], 0.0f));
    const float root = roots / (red + blue + 1e-3f);
    rebuilt[1] = std::max(rebuilt[1], root * root);
    for (std::size_t c = 0; c < 3; ++c) {
        v[c] += doubt[c] * std::max(std::min(rebuilt[c], top_) - v[c], 0.0f);
        v[c] += all * (top_ - v[c]);
    }
}

int RecoveredMosaic::channelAt(int row, int column) const {
    const bool isRedRow = ((row ^ phase_.redRow) & 1) == 0;
    const bool isRedColumn = ((column ^ phase_.redColumn) & 1) == 0;
    return isRedRow && isRedColumn ? 0 : isRedRow || isRedColumn ? 1 : 2;
}

void RecoveredMosaic::split(int row, int column, int pairs, float* even, float* odd) const {
    reader_.split(row, column, pairs, even, odd);
    const auto& doubt = highlights_.doubtFrom();
    const float limits[2] = {doubt[std::size_t(channelAt(row, column))],
                             doubt[std::size_t(channelAt(row, column + 1))]};
    // Runs of groups of pairs that hold something bright.
    for (int from = nextAbove(even, odd, limits, 0, pairs); from < pairs;) {
        int to = std::min(from + kPairGroup, pairs), next = nextAbove(even, odd, limits, to, pairs);
        while (next == to && next < pairs) {
            to = std::min(next + kPairGroup, pairs);
            next = nextAbove(even, odd, limits, to, pairs);
        }
        rebuild(row, column + 2 * from, to - from, limits, even + from, odd + from);
        from = next;
    }
}

void RecoveredMosaic::rebuild(int row, int column, int pairs, const float (&limits)[2], float* even,
                              float* odd) const {
    // The rows above, here and below, two columns wider at both sides.
    const int width = 2 * pairs + 4;
    thread_local std::vector<float> lines, parts;
    lines.resize(std::size_t(3 * width));
    parts.resize(std::size_t(width));
    for (int r = 0; r < 3; ++r) {
        float* line = lines.data() + r * width;
        reader_.split(row - 1 + r, column - 2, pairs + 2, parts.data(), parts.data() + pairs + 2);
        for (int k = 0; k < pairs + 2; ++k) {
            line[2 * k] = parts[std::size_t(k)];
            line[2 * k + 1] = parts[std::size_t(pairs + 2 + k)];
        }
    }
    float* const halves[2] = {even, odd};
    for (int k = 0; k < pairs; ++k) {
        for (int h = 0; h < 2; ++h) {
            if (!(halves[h][k] > limits[h])) continue;
            const int x = 2 * k + h;
            float sums[3] = {}, counts[3] = {};
            for (int r = 0; r < 3; ++r) {
                for (int c = -1; c <= 1; ++c) {
                    const int channel = channelAt(row - 1 + r, column + x + c);
                    sums[channel] += lines[std::size_t(r * width + x + 2 + c)];
                    counts[channel] += 1;
                }
            }
            const int own = channelAt(row, column + x);
            float v[3];
            for (int c = 0; c < 3; ++c)
                v[c] = sums[c] / std::max(counts[c], 1.0f);
            v[own] = halves[h][k];
            highlights_.recover(v, float(row - active_.top), float(column + x - active_.left));
            halves[h][k] = v[own];
        }
    }
}

} // namespace kelvaro
