#include "platform/imaging/Resampling.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelvaro {

double lanczosSupport(double scale) {
    return kLanczosLobes * std::max(1.0, 1 / scale);
}

double lanczosWeight(double x) {
    if (x == 0) return 1;
    if (std::abs(x) >= kLanczosLobes) return 0;
    const double t = std::numbers::pi * x, third = std::sin(t / kLanczosLobes);
    const double sine = third * (3 - 4 * third * third); // sin 3a, which is dearer than sin a
    return kLanczosLobes * sine * third / (t * t);
}

double catmullRomWeight(double x) {
    x = std::abs(x);
    if (x >= 2) return 0;
    return x < 1 ? (1.5 * x - 2.5) * x * x + 1 : ((-0.5 * x + 2.5) * x - 4) * x + 2;
}

double samplingWeight(Sampling sampling, double x) {
    switch (sampling) {
    case Sampling::bilinear:
        return std::max(0.0, 1 - std::abs(x));
    case Sampling::catmullRom:
        return catmullRomWeight(x);
    case Sampling::lanczos3:
        return lanczosWeight(x);
    }
    return 0;
}

int samplingRadius(Sampling sampling) {
    return sampling == Sampling::bilinear ? 1 : sampling == Sampling::catmullRom ? 2 : 3;
}

FilterTaps lanczosTaps(const FilterAxis& axis, int firstOutput, int count) {
    const double support = lanczosSupport(axis.scale), narrow = std::min(1.0, axis.scale);
    const int reach = static_cast<int>(std::ceil(2 * support)) + 1;
    const int size = axis.inputEnd - axis.inputFirst;
    FilterTaps table;
    table.taps = std::min(reach, size);
    table.first.resize(std::size_t(count));
    table.weights.assign(std::size_t(count) * std::size_t(table.taps), 0.0f);
    std::vector<double> sums(std::size_t(table.taps));
    for (int i = 0; i < count; ++i) {
        const double centre =
            axis.inputOrigin + (firstOutput + i + 0.5 - axis.outputOrigin) / axis.scale;
        const int begin = static_cast<int>(std::ceil(centre - support - 0.5));
        const int end = static_cast<int>(std::floor(centre + support - 0.5)) + 1;
        const int first = std::clamp(begin, axis.inputFirst, axis.inputEnd - table.taps);
        std::fill(sums.begin(), sums.end(), 0.0);
        double total = 0;
        for (int k = begin; k < end; ++k) {
            const double weight = lanczosWeight((k + 0.5 - centre) * narrow);
            const int inside = std::clamp(k, axis.inputFirst, axis.inputEnd - 1);
            sums[std::size_t(inside - first)] += weight;
            total += weight;
        }
        table.first[std::size_t(i)] = first;
        for (int k = 0; k < table.taps; ++k)
            table.weights[std::size_t(i) * std::size_t(table.taps) + std::size_t(k)] =
                static_cast<float>(sums[std::size_t(k)] / total);
    }
    return table;
}

LinearTaps stretchTaps(int inputFirst, int inputSize, int outputFirst, int outputSize, int first,
                       int count) {
    LinearTaps table;
    table.index.resize(std::size_t(count));
    table.fraction.resize(std::size_t(count));
    const double scale = double(inputSize) / outputSize;
    for (int i = 0; i < count; ++i) {
        const double centre = (first + i + 0.5 - outputFirst) * scale - 0.5;
        const double clamped = std::clamp(centre, 0.0, double(inputSize - 1));
        const int left =
            std::min(static_cast<int>(std::floor(clamped)), std::max(0, inputSize - 2));
        table.index[std::size_t(i)] = inputFirst + left;
        table.fraction[std::size_t(i)] = static_cast<float>(clamped - left);
    }
    return table;
}

} // namespace kelvaro
