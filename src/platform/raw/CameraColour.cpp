#include "platform/raw/CameraColour.h"

#include <algorithm>
#include <cmath>
#include <span>

namespace kelvaro {

namespace {

using Matrix = std::array<std::array<double, 3>, 3>;
using Vector = std::array<double, 3>;

constexpr Matrix kXyzFrom709{{{0.4123908, 0.3575843, 0.1804808},
                              {0.2126390, 0.7151687, 0.0721923},
                              {0.0193308, 0.1191948, 0.9505322}}};
constexpr Matrix kBradford{
    {{0.8951, 0.2664, -0.1614}, {-0.7502, 1.7135, 0.0367}, {0.0389, -0.0685, 1.0296}}};
constexpr Vector kD50{0.96422, 1, 0.82521};
constexpr double kDaylightKelvin = 5500;
constexpr double kMatrixKelvin = 6504, kMatrixTint = 9.7; // D65, where camera matrices are measured

Matrix product(const Matrix& a, const Matrix& b) {
    Matrix m{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            for (std::size_t k = 0; k < 3; ++k)
                m[i][j] += a[i][k] * b[k][j];
        }
    }
    return m;
}

Vector apply(const Matrix& m, const Vector& v) {
    Vector r{};
    for (std::size_t i = 0; i < 3; ++i)
        r[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
    return r;
}

std::optional<Matrix> inverse(const Matrix& m) {
    const auto minor = [&](std::size_t r, std::size_t c) {
        const std::size_t r1 = (r + 1) % 3, r2 = (r + 2) % 3, c1 = (c + 1) % 3, c2 = (c + 2) % 3;
        return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
    };
    const double determinant =
        m[0][0] * minor(0, 0) + m[0][1] * minor(0, 1) + m[0][2] * minor(0, 2);
    double size = 0;
    for (const auto& row : m) {
        for (const double v : row)
            size = std::max(size, std::abs(v));
    }
    // A determinant this small against the entries amplifies noise beyond use.
    if (!(std::abs(determinant) > 1e-5 * size * size * size)) return std::nullopt;
    Matrix result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j)
            result[i][j] = minor(j, i) / determinant;
    }
    return result;
}

Matrix adaptation(const Vector& from, const Vector& to) {
    const Vector a = apply(kBradford, from), b = apply(kBradford, to);
    Matrix scale{};
    for (std::size_t i = 0; i < 3; ++i)
        scale[i][i] = b[i] / a[i];
    return product(*inverse(kBradford), product(scale, kBradford));
}

Vector whiteOf709() {
    return apply(kXyzFrom709, {1, 1, 1});
}

// XYZ from camera values: the inverse for three channels, least squares for four.
std::optional<FromCamera> xyzFromCamera(const CameraFromXyz& m, int channels) {
    Matrix normal{}; // mᵀ m
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) {
            for (std::size_t c = 0; c < std::size_t(channels); ++c)
                normal[i][j] += m[c][i] * m[c][j];
        }
    }
    const auto inverted = inverse(normal);
    if (!inverted) return std::nullopt;
    FromCamera result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t c = 0; c < std::size_t(channels); ++c) {
            for (std::size_t k = 0; k < 3; ++k)
                result[i][c] += (*inverted)[i][k] * m[c][k];
        }
    }
    return result;
}

bool isUsable(const Calibration& calibration, int channels) {
    for (std::size_t c = 0; c < std::size_t(channels); ++c) {
        for (const double v : calibration.cameraFromXyz[c]) {
            if (!std::isfinite(v)) return false;
        }
    }
    return xyzFromCamera(calibration.cameraFromXyz, channels).has_value();
}

bool isUsable(const ChannelValues& neutral, int channels) {
    const auto used = std::span(neutral).first(std::size_t(channels));
    const auto [low, high] = std::minmax_element(used.begin(), used.end());
    return std::all_of(used.begin(), used.end(),
                       [](double v) { return std::isfinite(v) && v > 0; }) &&
           *high < 1000 * *low;
}

// The calibrations mixed for a light's temperature, linearly in mireds.
Calibration at(const CameraMatrices& camera, double kelvin) {
    if (!camera.second) return *camera.first;
    const Calibration &a = *camera.first, &b = *camera.second;
    if (a.kelvin == b.kelvin) return a;
    const double f =
        std::clamp((1 / kelvin - 1 / a.kelvin) / (1 / b.kelvin - 1 / a.kelvin), 0.0, 1.0);
    Calibration mixed = a;
    for (std::size_t c = 0; c < kMaximumChannels; ++c) {
        for (std::size_t i = 0; i < 3; ++i) {
            mixed.cameraFromXyz[c][i] = std::lerp(a.cameraFromXyz[c][i], b.cameraFromXyz[c][i], f);
        }
    }
    if (!a.forward || !b.forward) {
        mixed.forward = a.forward ? a.forward : b.forward;
        return mixed;
    }
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t c = 0; c < kMaximumChannels; ++c) {
            (*mixed.forward)[i][c] = std::lerp((*a.forward)[i][c], (*b.forward)[i][c], f);
        }
    }
    return mixed;
}

// Lights that people photograph under lie near the Planckian locus.
bool isPlausible(const Chromaticity& white) {
    const TemperatureTint t = temperatureOf(white);
    return t.kelvin > 1700 && t.kelvin < 60000 && std::abs(t.tint) < 100;
}

Vector xyzOf(const Chromaticity& c) {
    return {c.x / c.y, 1, (1 - c.x - c.y) / c.y};
}

ChannelValues neutralUnder(const CameraMatrices& camera, const Chromaticity& white) {
    const Calibration calibration = at(camera, temperatureOf(white).kelvin);
    const Vector xyz = xyzOf(white);
    ChannelValues neutral{1, 1, 1, 1};
    for (std::size_t c = 0; c < std::size_t(camera.channels); ++c) {
        const auto& row = calibration.cameraFromXyz[c];
        neutral[c] = row[0] * xyz[0] + row[1] * xyz[1] + row[2] * xyz[2];
    }
    return neutral;
}

// The white whose camera values are `neutral`; the matrix depends on the white, so it is found by
// repetition, which the DNG description proposes.
std::optional<Chromaticity> whiteOf(const CameraMatrices& camera, const ChannelValues& neutral) {
    Chromaticity white{0.3457, 0.3585};
    for (int i = 0; i < 30; ++i) {
        const auto toXyz =
            xyzFromCamera(at(camera, temperatureOf(white).kelvin).cameraFromXyz, camera.channels);
        if (!toXyz) return std::nullopt;
        Vector xyz{};
        for (std::size_t k = 0; k < 3; ++k) {
            for (std::size_t c = 0; c < std::size_t(camera.channels); ++c) {
                xyz[k] += (*toXyz)[k][c] * neutral[c];
            }
        }
        const double sum = xyz[0] + xyz[1] + xyz[2];
        if (!(xyz[1] > 0 && sum > 0)) return std::nullopt;
        const Chromaticity next{xyz[0] / sum, xyz[1] / sum};
        if (!(next.x > 0.05 && next.x < 0.8 && next.y > 0.05 && next.y < 0.8)) return std::nullopt;
        const bool settled = std::abs(next.x - white.x) + std::abs(next.y - white.y) < 1e-7;
        // Half steps settle where whole ones would swing between two calibrations.
        white = i < 15 ? next : Chromaticity{(white.x + next.x) / 2, (white.y + next.y) / 2};
        if (settled) break;
    }
    return white;
}

// Scales the rows so that equal channels become exactly white.
void fixWhite(FromCamera& matrix, int channels) {
    for (auto& row : matrix) {
        double sum = 0;
        for (std::size_t c = 0; c < std::size_t(channels); ++c)
            sum += row[c];
        for (double& v : row)
            v /= sum;
    }
}

FromCamera toWorking(const CameraMatrices& camera, const ChannelValues& neutral,
                     const Chromaticity& white) {
    const Calibration calibration = at(camera, temperatureOf(white).kelvin);
    const Matrix rgbFromXyz = *inverse(kXyzFrom709);
    FromCamera toXyz{};
    Matrix adapted{};
    if (calibration.forward) {
        toXyz = *calibration.forward;
        adapted = product(rgbFromXyz, adaptation(kD50, whiteOf709()));
    } else {
        toXyz = *xyzFromCamera(calibration.cameraFromXyz, camera.channels);
        for (auto& row : toXyz) {
            for (std::size_t c = 0; c < kMaximumChannels; ++c)
                row[c] *= neutral[c];
        }
        adapted = product(rgbFromXyz, adaptation(xyzOf(white), whiteOf709()));
    }
    FromCamera result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t c = 0; c < std::size_t(camera.channels); ++c) {
            for (std::size_t k = 0; k < 3; ++k)
                result[i][c] += adapted[i][k] * toXyz[k][c];
        }
    }
    fixWhite(result, camera.channels);
    return result;
}

bool isSane(const FromCamera& matrix) {
    for (const auto& row : matrix) {
        for (const double v : row) {
            if (!(std::abs(v) < 30)) return false;
        }
    }
    return true;
}

// Camera channels taken as red, green, blue (four: red, green, blue, green).
FromCamera plainMatrix(int channels) {
    FromCamera m{};
    for (std::size_t i = 0; i < 3; ++i)
        m[i][i] = 1;
    if (channels == 4) m[1] = {0, 0.5, 0, 0.5};
    if (channels == 1) m = FromCamera{{{1, 0, 0, 0}, {1, 0, 0, 0}, {1, 0, 0, 0}}};
    return m;
}

} // namespace

CameraColour cameraColour(const CameraMatrices& given) {
    CameraMatrices camera = given;
    if (camera.first && !isUsable(*camera.first, camera.channels)) camera.first.reset();
    if (camera.second && !isUsable(*camera.second, camera.channels)) camera.second.reset();
    if (!camera.first) std::swap(camera.first, camera.second);
    const bool isKnown = camera.first && camera.channels >= 3;

    ChannelValues neutral{1, 1, 1, 1}, matrixNeutral = neutral;
    std::optional<Chromaticity> white;
    if (camera.neutral && isUsable(*camera.neutral, camera.channels)) {
        neutral = matrixNeutral = *camera.neutral;
        if (isKnown) white = whiteOf(camera, neutral);
        if (isKnown && !(white && isPlausible(*white))) {
            // The camera scaled its samples before it stored them: the matrix holds for its own
            // white.
            white = chromaticityOf({kMatrixKelvin, kMatrixTint});
            matrixNeutral = neutralUnder(camera, *white);
        }
    } else if (isKnown) {
        white = camera.whiteXy.value_or(chromaticityOf({kDaylightKelvin, 0}));
        neutral = matrixNeutral = neutralUnder(camera, *white);
    }
    if (!isUsable(neutral, camera.channels) || !isUsable(matrixNeutral, camera.channels)) {
        neutral = {1, 1, 1, 1};
        white.reset();
    }

    CameraColour colour;
    const auto used = std::span(neutral).first(std::size_t(camera.channels));
    const double largest = *std::max_element(used.begin(), used.end());
    for (std::size_t c = 0; c < std::size_t(camera.channels); ++c) {
        colour.balance[c] = largest / neutral[c];
    }
    colour.toWorking = plainMatrix(camera.channels);
    if (white) {
        const FromCamera matrix = toWorking(camera, matrixNeutral, *white);
        if (isSane(matrix)) {
            colour.toWorking = matrix;
            colour.asShot = temperatureOf(*white);
            colour.asShot.tint = std::clamp(colour.asShot.tint, -150.0, 150.0);
        }
    }
    return colour;
}

} // namespace kelvaro
