#include "platform/raw/XTransDemosaic.h"

#include "platform/raw/Demosaic.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

constexpr float kTiny = 1e-4f;
constexpr int kRadius = 2; // of every window

float encode(float v, float toe) {
    return v / std::sqrt(std::abs(v) + toe);
}
float decode(float e, float toe) {
    return e * (std::abs(e) + std::sqrt(e * e + 4 * toe)) * 0.5f;
}

} // namespace

XTransDemosaic::XTransDemosaic(const ColourFilters& filters, int maximumWidth, int maximumHeight)
    : filters_(filters) {
    const auto size = std::size_t(maximumWidth) * std::size_t(maximumHeight);
    for (auto* plane : {&encoded_, &green_, &difference_, &across_, &down_, &sums_, &scratch_}) {
        plane->resize(size);
    }
    const auto channelAt = [&](int row, int column) { return filters_.at(row + 60, column + 60); };
    for (int row = 0; row < 6; ++row) {
        for (int column = 0; column < 6; ++column) {
            Place& place = places_[std::size_t(row * 6 + column)];
            place.channel = channelAt(row, column);
            const auto nearest = [&](int dy, int dx) {
                int distance = 1; // a pattern without green in a line ends at 6
                while (distance < 6 && channelAt(row + dy * distance, column + dx * distance) != 1)
                    ++distance;
                return distance;
            };
            place.left = nearest(0, -1);
            place.right = nearest(0, 1);
            place.up = nearest(-1, 0);
            place.down = nearest(1, 0);
            for (int dy = -kRadius; dy <= kRadius; ++dy) {
                for (int dx = -kRadius; dx <= kRadius; ++dx) {
                    if (dy == 0 && dx == 0) continue;
                    const int channel = channelAt(row + dy, column + dx);
                    const float weight = std::exp(-float(dy * dy + dx * dx) / 3.0f);
                    if (channel == 0) place.red.push_back({dy, dx, weight});
                    if (channel == 2) place.blue.push_back({dy, dx, weight});
                }
            }
        }
    }
}

// Sums over 5 × 5, borders left alone.
void XTransDemosaic::boxSum(const std::vector<float>& in, std::vector<float>& out) {
    for (int y = 0; y < height_; ++y) {
        const float* from = in.data() + y * width_;
        float* to = scratch_.data() + y * width_;
        for (int x = kRadius; x < width_ - kRadius; ++x) {
            to[x] = from[x - 2] + from[x - 1] + from[x] + from[x + 1] + from[x + 2];
        }
    }
    for (int y = kRadius; y < height_ - kRadius; ++y) {
        const float* from = scratch_.data() + y * width_;
        float* to = out.data() + y * width_;
        for (int x = kRadius; x < width_ - kRadius; ++x) {
            to[x] = from[x - 2 * width_] + from[x - width_] + from[x] + from[x + width_] +
                    from[x + 2 * width_];
        }
    }
}

// Mean squared steps between neighbouring photosites of one colour, across and down. The pattern
// has as many pairs in one direction as in the other within any 6 × 6, nearly so within 5 × 5.
void XTransDemosaic::measureRoughness(int row, int column) {
    const auto collect = [&](int dy, int dx, std::vector<float>& out) {
        std::fill(sums_.begin(), sums_.end(), 0.0f);
        for (int y = 0; y < height_ - 2 * dy; ++y) {
            for (int x = 0; x < width_ - 2 * dx; ++x) {
                const int channel = place(row + y, column + x).channel;
                for (int step = 1; step <= 2; ++step) {
                    if (place(row + y + dy * step, column + x + dx * step).channel != channel)
                        continue;
                    const int at = y * width_ + x;
                    const float d = encoded_[std::size_t(at)] -
                                    encoded_[std::size_t(at + step * (dy * width_ + dx))];
                    sums_[std::size_t(at)] += d * d / float(step);
                    break;
                }
            }
        }
        boxSum(sums_, out);
    };
    collect(0, 1, across_);
    collect(1, 0, down_);
}

void XTransDemosaic::interpolateGreen(int row, int column) {
    for (int y = 6; y < height_ - 6; ++y) {
        for (int x = 6; x < width_ - 6; ++x) {
            const Place& p = place(row + y, column + x);
            const auto i = std::size_t(y * width_ + x);
            if (p.channel == 1) {
                green_[i] = encoded_[i];
                continue;
            }
            const float* e = encoded_.data() + i;
            const float h = (e[-p.left] * float(p.right) + e[p.right] * float(p.left)) /
                            float(p.left + p.right);
            const float v = (e[-p.up * width_] * float(p.down) + e[p.down * width_] * float(p.up)) /
                            float(p.up + p.down);
            // Far neighbours say less.
            const float a = (across_[i] + kTiny) * float(p.left * p.right),
                        b = (down_[i] + kTiny) * float(p.up * p.down);
            const float wh = b * b, wv = a * a;
            green_[i] = (wh * h + wv * v) / (wh + wv);
        }
    }
}

float XTransDemosaic::predicted(const std::vector<Neighbour>& among, const float* green,
                                const float* difference) const {
    float sum = 0, weights = 1e-20f;
    for (const Neighbour& n : among) {
        const std::ptrdiff_t at = n.dy * width_ + n.dx;
        const float d = green[at] - green[0];
        const float weight = n.weight / (d * d + 4e-3f);
        sum += weight * difference[at];
        weights += weight;
    }
    return sum / weights;
}

void XTransDemosaic::refineGreen(int row, int column) {
    for (int y = 8; y < height_ - 8; ++y) {
        for (int x = 8; x < width_ - 8; ++x) {
            const Place& p = place(row + y, column + x);
            if (p.channel == 1) continue;
            const auto i = std::size_t(y * width_ + x);
            const float others = predicted(p.channel == 0 ? p.red : p.blue, green_.data() + i,
                                           difference_.data() + i);
            scratch_[i] = 0.5f * (green_[i] + encoded_[i] - others);
        }
    }
    for (int y = 8; y < height_ - 8; ++y) {
        for (int x = 8; x < width_ - 8; ++x) {
            const auto i = std::size_t(y * width_ + x);
            if (place(row + y, column + x).channel != 1) green_[i] = scratch_[i];
        }
    }
}

void XTransDemosaic::run(const float* mosaic, std::ptrdiff_t stride, int width, int height, int row,
                         int column, float toe, float* const (&planes)[3]) {
    width_ = width;
    height_ = height;
    row = (row % 6 + 6) % 6;
    column = (column % 6 + 6) % 6;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            encoded_[std::size_t(y * width + x)] = encode(mosaic[y * stride + x], toe);
    }
    measureRoughness(row, column);
    interpolateGreen(row, column);
    const auto takeDifferences = [&](int border) {
        for (int y = border; y < height - border; ++y) {
            for (int x = border; x < width - border; ++x) {
                const auto i = std::size_t(y * width + x);
                difference_[i] = encoded_[i] - green_[i];
            }
        }
    };
    takeDifferences(6);
    for (int pass = 0; pass < 2; ++pass) {
        refineGreen(row, column);
        takeDifferences(8);
    }
    for (int y = kBorder; y < height - kBorder; ++y) {
        for (int x = kBorder; x < width - kBorder; ++x) {
            const auto i = std::size_t(y * width + x);
            const Place& p = place(row + y, column + x);
            const float g = green_[i];
            const float r = p.channel == 0
                                ? encoded_[i]
                                : g + predicted(p.red, green_.data() + i, difference_.data() + i);
            const float b = p.channel == 2
                                ? encoded_[i]
                                : g + predicted(p.blue, green_.data() + i, difference_.data() + i);
            const std::ptrdiff_t at = y * stride + x;
            planes[0][at] = decode(r, toe);
            planes[1][at] = decode(g, toe);
            planes[2][at] = decode(b, toe);
        }
    }
}

} // namespace kelvaro
