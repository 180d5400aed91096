#include "platform/raw/WhiteMatch.h"

#include "platform/raw/PreviewLight.h"

#include <algorithm>
#include <cmath>

namespace kelvaro {

namespace {

constexpr int kAcross = 24, kDown = 16, kEachWay = 8; // cells, and samples along a cell's sides
constexpr float kMidFrom = 0.02f, kMidTo = 0.6f;
constexpr double kLargestGain = 3;
constexpr std::size_t kFewest = 24; // cells

using Rgb = std::array<float, 3>;

// The mean of a cell of a picture that is read by `at(x, y)`.
template<class At>
Rgb cellMean(PixelSize size, int column, int row, const At& at) {
    Rgb sum{};
    for (int j = 0; j < kEachWay; ++j) {
        for (int i = 0; i < kEachWay; ++i) {
            const int x = int((column + (i + 0.5) / kEachWay) * size.width / kAcross);
            const int y = int((row + (j + 0.5) / kEachWay) * size.height / kDown);
            const Rgb v = at(std::min(x, size.width - 1), std::min(y, size.height - 1));
            for (std::size_t c = 0; c < 3; ++c)
                sum[c] += v[c] / (kEachWay * kEachWay);
        }
    }
    return sum;
}

bool isMidTone(const Rgb& v) {
    const auto [low, high] = std::minmax_element(v.begin(), v.end());
    return *low > kMidFrom && *high < kMidTo;
}

// Camera values from Rec. 709: the inverse of the colour's matrix, by Cramer's rule.
std::optional<std::array<double, 3>> cameraValues(const FromCamera& m, const Rgb& rgb) {
    const auto determinant = [&](int replaced) {
        double a[3][3];
        for (std::size_t i = 0; i < 3; ++i) {
            for (std::size_t c = 0; c < 3; ++c)
                a[i][c] = int(c) == replaced ? double(rgb[i]) : m[i][c];
        }
        return a[0][0] * (a[1][1] * a[2][2] - a[1][2] * a[2][1]) -
               a[0][1] * (a[1][0] * a[2][2] - a[1][2] * a[2][0]) +
               a[0][2] * (a[1][0] * a[2][1] - a[1][1] * a[2][0]);
    };
    const double whole = determinant(-1);
    if (!(std::abs(whole) > 1e-6)) return std::nullopt;
    std::array<double, 3> values{};
    for (int c = 0; c < 3; ++c) {
        values[std::size_t(c)] = determinant(c) / whole;
        if (!(values[std::size_t(c)] > 1e-4)) return std::nullopt;
    }
    return values;
}

double median(std::vector<double>& values) {
    const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

std::optional<ChannelValues> matchedNeutral(const Raster& developed, const CameraColour& colour,
                                            const DecodedBitmap& preview) {
    const PixelSize ours = developed.extent().size(), theirs = preview.pixels.size;
    const auto ourLight = [&](int x, int y) {
        return Rgb{developed.row(0, y)[x], developed.row(1, y)[x], developed.row(2, y)[x]};
    };
    const auto theirLight = [&](int x, int y) { return lightAt(preview, x, y); };
    std::vector<double> red, blue;
    for (int row = 0; row < kDown; ++row) {
        for (int column = 0; column < kAcross; ++column) {
            const Rgb a = cellMean(ours, column, row, ourLight);
            const Rgb b = cellMean(theirs, column, row, theirLight);
            if (!isMidTone(a) || !isMidTone(b)) continue;
            const auto have = cameraValues(colour.toWorking, a);
            const auto want = cameraValues(colour.toWorking, b);
            if (!have || !want) continue;
            red.push_back(((*want)[0] / (*want)[1]) / ((*have)[0] / (*have)[1]));
            blue.push_back(((*want)[2] / (*want)[1]) / ((*have)[2] / (*have)[1]));
        }
    }
    if (red.size() < kFewest) return std::nullopt;
    const auto bounded = [](double gain) {
        return std::clamp(gain, 1 / kLargestGain, kLargestGain);
    };
    return ChannelValues{1 / (colour.balance[0] * bounded(median(red))), 1 / colour.balance[1],
                         1 / (colour.balance[2] * bounded(median(blue))), 1};
}

} // namespace kelvaro
