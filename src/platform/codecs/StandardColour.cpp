#include "platform/codecs/StandardColour.h"

#include <cmath>

namespace kelvaro {

namespace {

constexpr std::array<double, 3> kConnectionWhite{0.9642, 1.0, 0.8249}; // ICC.1, D50
constexpr double kDiffuseWhite = 203;                                  // cd/m², BT.2408

// Cone responses of the Bradford transform (Lam 1985; ICC.1 Annex E).
constexpr Matrix3 kBradford{
    {{0.8951, 0.2664, -0.1614}, {-0.7502, 1.7135, 0.0367}, {0.0389, -0.0685, 1.0296}}};

std::array<double, 3> product(const Matrix3& m, const std::array<double, 3>& v) {
    std::array<double, 3> out{};
    for (std::size_t i = 0; i < 3; ++i)
        out[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
    return out;
}

std::array<double, 3> whiteOf(const Chromaticities& c) {
    return {c.whiteX / c.whiteY, 1, (1 - c.whiteX - c.whiteY) / c.whiteY};
}

Matrix3 adaptation(const std::array<double, 3>& from, const std::array<double, 3>& to) {
    const auto a = product(kBradford, from), b = product(kBradford, to);
    Matrix3 scale{};
    for (std::size_t i = 0; i < 3; ++i)
        scale[i][i] = b[i] / a[i];
    return multiply(*inverse(kBradford), multiply(scale, kBradford));
}

double decodePq(double v) {
    constexpr double m1 = 2610.0 / 16384, m2 = 2523.0 / 32, c1 = 3424.0 / 4096, c2 = 2413.0 / 128,
                     c3 = 2392.0 / 128;
    const double p = std::pow(v, 1 / m2);
    return 10000 / kDiffuseWhite * std::pow(std::max(p - c1, 0.0) / (c2 - c3 * p), 1 / m1);
}

double decodeHlg(double v) {
    constexpr double a = 0.17883277, b = 0.28466892, c = 0.55991073;
    const double scene = v <= 0.5 ? v * v / 3 : (std::exp((v - c) / a) + b) / 12;
    return 1000 / kDiffuseWhite * std::pow(scene, 1.2);
}

} // namespace

Matrix3 multiply(const Matrix3& a, const Matrix3& b) {
    Matrix3 out{};
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j)
            for (std::size_t k = 0; k < 3; ++k)
                out[i][j] += a[i][k] * b[k][j];
    return out;
}

std::optional<Matrix3> inverse(const Matrix3& m) {
    Matrix3 out{};
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j) {
            const std::size_t r = (j + 1) % 3, s = (j + 2) % 3, c = (i + 1) % 3, d = (i + 2) % 3;
            out[i][j] = m[r][c] * m[s][d] - m[r][d] * m[s][c];
        }
    const double determinant = m[0][0] * out[0][0] + m[0][1] * out[1][0] + m[0][2] * out[2][0];
    if (!(std::abs(determinant) > 1e-9) || !std::isfinite(determinant)) return std::nullopt;
    for (auto& row : out)
        for (auto& value : row)
            value /= determinant;
    return out;
}

double decodeTransfer(const StandardColour& colour, double v) {
    switch (colour.transfer) {
    case Transfer::sRGB:
        return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    case Transfer::linear:
        return v;
    case Transfer::rec709:
        return v < 0.081 ? v / 4.5 : std::pow((v + 0.099) / 1.099, 1 / 0.45);
    case Transfer::gamma:
        return std::pow(v, colour.gamma);
    case Transfer::pq:
        return decodePq(v);
    case Transfer::hlg:
        return decodeHlg(v);
    }
    return v;
}

std::optional<Matrix3> primariesToXyz(const Chromaticities& c) {
    for (const double y : {c.redY, c.greenY, c.blueY, c.whiteY})
        if (!(y > 1e-4)) return std::nullopt;
    Matrix3 m{{{c.redX / c.redY, c.greenX / c.greenY, c.blueX / c.blueY},
               {1, 1, 1},
               {(1 - c.redX - c.redY) / c.redY, (1 - c.greenX - c.greenY) / c.greenY,
                (1 - c.blueX - c.blueY) / c.blueY}}};
    const auto inverted = inverse(m);
    if (!inverted) return std::nullopt;
    const auto amounts = product(*inverted, whiteOf(c));
    for (std::size_t j = 0; j < 3; ++j) {
        if (!(amounts[j] > 0)) return std::nullopt; // the white lies outside the triangle
        for (std::size_t i = 0; i < 3; ++i)
            m[i][j] *= amounts[j];
    }
    return m;
}

std::optional<Matrix3> matrixToRec709(const Chromaticities& primaries) {
    const auto from = primariesToXyz(primaries);
    if (!from) return std::nullopt;
    const auto to = inverse(*primariesToXyz(kRec709Primaries));
    return multiply(*to,
                    multiply(adaptation(whiteOf(primaries), whiteOf(kRec709Primaries)), *from));
}

Matrix3 connectionSpaceToRec709() {
    const auto adapt = adaptation(kConnectionWhite, whiteOf(kRec709Primaries));
    return multiply(*inverse(*primariesToXyz(kRec709Primaries)), adapt);
}

ToneTable makeToneTable(SampleType type, const std::function<double(double)>& curve) {
    const std::size_t count = type == SampleType::u8 ? 256 : 65536;
    auto table = std::make_shared<std::vector<float>>(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double value = curve(double(i) / double(count - 1));
        (*table)[i] = std::isfinite(value) ? float(value) : 0.0F;
    }
    return table;
}

ToneTable sRGBToneTable(SampleType type) {
    const auto make = [](SampleType t) {
        return makeToneTable(t, [](double v) { return decodeTransfer({}, v); });
    };
    static const ToneTable bytes = make(SampleType::u8), words = make(SampleType::u16);
    return type == SampleType::u8 ? bytes : words;
}

void setMatrix(ColourDecoding& decoding, const Matrix3& matrix, double tolerance) {
    double furthest = 0;
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j)
            furthest = std::max(furthest, std::abs(matrix[i][j] - (i == j ? 1 : 0)));
    decoding.matrixIsIdentity = furthest <= tolerance;
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t j = 0; j < 3; ++j)
            decoding.toWorking[i][j] =
                decoding.matrixIsIdentity ? (i == j ? 1.0F : 0.0F) : float(matrix[i][j]);
}

ColourDecoding decodingOf(const StandardColour& colour, SampleType type) {
    ColourDecoding decoding;
    const ToneTable table =
        colour.transfer == Transfer::sRGB
            ? sRGBToneTable(type)
            : makeToneTable(type, [&](double v) { return decodeTransfer(colour, v); });
    decoding.tone = {table, table, table};
    if (const auto matrix = matrixToRec709(colour.primaries)) setMatrix(decoding, *matrix, 1e-3);
    return decoding;
}

} // namespace kelvaro
