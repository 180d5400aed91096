#include "platform/raw/ReferenceDemosaic.h"

#include <algorithm>
#include <cmath>

namespace kelvaro::test {

namespace {

constexpr float kTiny = 1e-5f, kTinySquare = 1e-10f;

float square(float v) {
    return v * v;
}
float mix(float a, float b, float f) {
    return a + (b - a) * f;
}

// Sixth-order difference along a line of photosites that alternate between two colours.
float highPass(const float* p, std::ptrdiff_t step) {
    return square((p[-3 * step] - p[-step] - p[step] + p[3 * step]) -
                  3 * (p[-2 * step] + p[2 * step]) + 6 * p[0]);
}

// Of a direction weight and its mean over the neighbours, the more decided one.
float refined(float own, float around) {
    return std::abs(0.5f - own) < std::abs(0.5f - around) ? around : own;
}

float diagonalMean(const float* p, std::ptrdiff_t s) {
    return 0.25f * (p[-s - 1] + p[-s + 1] + p[s - 1] + p[s + 1]);
}

struct Estimate {
    float value, gradient;
};

Estimate greenTowards(const float* m, std::ptrdiff_t d) {
    const float gradient = kTiny + std::abs(m[d] - m[-d]) + std::abs(m[0] - m[2 * d]) +
                           std::abs(m[d] - m[3 * d]) + std::abs(m[2 * d] - m[4 * d]);
    return {m[d] + 0.5f * (m[0] - m[2 * d]), gradient};
}

// Difference from green at the neighbour towards d, and how rough the way there is.
Estimate differenceTowards(const float* colour, const float* green, std::ptrdiff_t d,
                           std::ptrdiff_t next) {
    const float gradient = kTiny + std::abs(colour[d] - colour[-d]) +
                           std::abs(colour[d] - colour[3 * d]) + std::abs(green[0] - green[next]);
    return {colour[d] - green[d], gradient};
}

// Both sides, each weighted by the other's roughness.
float between(const Estimate& a, const Estimate& b) {
    return (a.gradient * b.value + b.gradient * a.value) / (a.gradient + b.gradient);
}

} // namespace

void referenceDemosaic(const std::vector<float>& given, int width, int height, BayerPhase phase,
                       std::vector<float> (&planes)[3]) {
    const std::ptrdiff_t s = width;
    std::vector<float> encoded(given);
    for (float& v : encoded)
        v /= std::sqrt(std::abs(v) + kLeastToe);
    const float* mosaic = encoded.data();
    std::vector<float> vertical(given.size()), diagonal(given.size()), highPassA(given.size()),
        highPassB(given.size());
    for (auto& plane : planes)
        plane.assign(given.size(), 0.0f);
    const auto offset = [&](int row, int column) { return row * s + column; };
    const auto isGreen = [&](int row, int column) {
        return ((row ^ phase.redRow) & 1) != ((column ^ phase.redColumn) & 1);
    };
    const auto colourOf = [&](int row) { return ((row ^ phase.redRow) & 1) == 0 ? 0 : 2; };
    const auto forEach = [&](int border, auto&& use) {
        for (int row = border; row < height - border; ++row) {
            for (int column = border; column < width - border; ++column) {
                use(row, column, offset(row, column));
            }
        }
    };

    const auto window = [&](const float* p) {
        float sum = 0;
        for (int y = -1; y <= 1; ++y) {
            for (int x = -1; x <= 1; ++x)
                sum += p[y * s + x];
        }
        return sum;
    };

    // Which way is smoother: 0 vertical … 1 horizontal.
    forEach(3, [&](int, int, std::ptrdiff_t i) {
        highPassA[std::size_t(i)] = highPass(mosaic + i, s);
        highPassB[std::size_t(i)] = highPass(mosaic + i, 1);
    });
    forEach(4, [&](int, int, std::ptrdiff_t i) {
        const float* a = highPassA.data() + i;
        const float* b = highPassB.data() + i;
        const float v = std::max(kTinySquare, window(a));
        const float h = std::max(kTinySquare, window(b));
        vertical[std::size_t(i)] = v / (v + h);
    });
    forEach(0, [&](int row, int column, std::ptrdiff_t i) {
        planes[isGreen(row, column) ? 1 : colourOf(row)][std::size_t(i)] = mosaic[i];
    });
    forEach(5, [&](int row, int column, std::ptrdiff_t i) {
        if (isGreen(row, column)) return;
        const float* m = mosaic + i;
        const float* direction = vertical.data() + i;
        const float v = between(greenTowards(m, -s), greenTowards(m, s));
        const float h = between(greenTowards(m, -1), greenTowards(m, 1));
        planes[1][std::size_t(i)] = mix(v, h, refined(direction[0], diagonalMean(direction, s)));
    });

    // The other colour at red and blue, along the smoother diagonal.
    forEach(3, [&](int row, int column, std::ptrdiff_t i) {
        if (isGreen(row, column)) return;
        highPassA[std::size_t(i)] = highPass(mosaic + i, s + 1);
        highPassB[std::size_t(i)] = highPass(mosaic + i, s - 1);
    });
    forEach(4, [&](int row, int column, std::ptrdiff_t i) {
        if (isGreen(row, column)) return;
        const float* a = highPassA.data() + i;
        const float* b = highPassB.data() + i;
        const float p = std::max(kTinySquare, a[-s - 1] + a[0] + a[s + 1]);
        const float q = std::max(kTinySquare, b[-s + 1] + b[0] + b[s - 1]);
        diagonal[std::size_t(i)] = p / (p + q);
    });
    forEach(7, [&](int row, int column, std::ptrdiff_t i) {
        if (isGreen(row, column)) return;
        float* colour = planes[2 - colourOf(row)].data() + i;
        const float* green = planes[1].data() + i;
        const float* direction = diagonal.data() + i;
        const std::ptrdiff_t p = s + 1, q = s - 1;
        const float a = between(differenceTowards(colour, green, -p, -2 * p),
                                differenceTowards(colour, green, p, 2 * p));
        const float b = between(differenceTowards(colour, green, -q, -2 * q),
                                differenceTowards(colour, green, q, 2 * q));
        colour[0] = green[0] + mix(a, b, refined(direction[0], diagonalMean(direction, s)));
    });

    // Red and blue at green.
    forEach(kDemosaicBorder, [&](int row, int column, std::ptrdiff_t i) {
        if (!isGreen(row, column)) return;
        const float* green = planes[1].data() + i;
        const float* direction = vertical.data() + i;
        const float f = refined(direction[0], diagonalMean(direction, s));
        for (const int c : {0, 2}) {
            float* colour = planes[c].data() + i;
            const float v = between(differenceTowards(colour, green, -s, -2 * s),
                                    differenceTowards(colour, green, s, 2 * s));
            const float h = between(differenceTowards(colour, green, -1, -2),
                                    differenceTowards(colour, green, 1, 2));
            colour[0] = green[0] + mix(v, h, f);
        }
    });
    for (auto& plane : planes) {
        for (float& e : plane)
            e *= (std::abs(e) + std::sqrt(e * e + 4 * kLeastToe)) / 2;
    }
}

} // namespace kelvaro::test
