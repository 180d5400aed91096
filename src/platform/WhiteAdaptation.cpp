#include "platform/WhiteAdaptation.h"

#include <cmath>

namespace kelvaro {

namespace {

constexpr double kTintUnit = 1.0 / 3000; // of CIE 1960 uv

Point planckianUv(double t) {
    return {(0.860117757 + 1.54118254e-4 * t + 1.28641212e-7 * t * t) /
                (1 + 8.42420235e-4 * t + 7.08145163e-7 * t * t),
            (0.317398726 + 4.22806245e-5 * t + 4.20481691e-8 * t * t) /
                (1 - 2.89741816e-5 * t + 1.61456053e-7 * t * t)};
}

Matrix3 product(const Matrix3& a, const Matrix3& b) {
    Matrix3 c{};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            for (int k = 0; k < 3; ++k)
                c[i][j] += a[i][k] * b[k][j];
    return c;
}

Matrix3 inverse(const Matrix3& m) {
    const auto cofactor = [&](int i, int j) {
        const int r0 = (i + 1) % 3, r1 = (i + 2) % 3, c0 = (j + 1) % 3, c1 = (j + 2) % 3;
        return m[r0][c0] * m[r1][c1] - m[r0][c1] * m[r1][c0];
    };
    const double determinant =
        m[0][0] * cofactor(0, 0) + m[0][1] * cofactor(0, 1) + m[0][2] * cofactor(0, 2);
    Matrix3 result{};
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            result[i][j] = cofactor(j, i) / determinant;
    return result;
}

std::array<double, 3> applied(const Matrix3& m, const std::array<double, 3>& v) {
    std::array<double, 3> out{};
    for (int i = 0; i < 3; ++i)
        out[i] = m[i][0] * v[0] + m[i][1] * v[1] + m[i][2] * v[2];
    return out;
}

// Linear Rec. 709 to XYZ (D65), from the primaries of ITU-R BT.709.
constexpr Matrix3 kToXyz{{{0.4123907992659595, 0.3575843393838780, 0.1804807884018343},
                          {0.2126390058715104, 0.7151686787677559, 0.0721923153607337},
                          {0.0193308187155918, 0.1191947797946259, 0.9505321522496608}}};
// Lam's Bradford cone responses (1985), as in the ICC profile specification.
constexpr Matrix3 kBradford{
    {{0.8951, 0.2664, -0.1614}, {-0.7502, 1.7135, 0.0367}, {0.0389, -0.0685, 1.0296}}};

std::array<double, 3> coneResponse(WhitePoint white) {
    const Point xy = whiteChromaticity(white);
    return applied(kBradford, {xy.x / xy.y, 1, (1 - xy.x - xy.y) / xy.y});
}

} // namespace

Point whiteChromaticity(WhitePoint white) {
    const Point uv = planckianUv(white.kelvin);
    const double step = white.kelvin * 1e-4;
    const Point before = planckianUv(white.kelvin - step), after = planckianUv(white.kelvin + step);
    // The locus runs towards smaller u and v as it gets hotter; green lies on its upper side.
    const double du = after.x - before.x, dv = after.y - before.y, length = std::hypot(du, dv);
    const double greenU = dv / length, greenV = -du / length;
    double shift = kTintUnit * white.tint;
    // Warm whites lie close to where the blue cone sees nothing. Its response (times 2 v) is linear
    // in u and v; steps towards green shorten it by a ratio, so that they never get there.
    const double blue = 4.1184 - 0.9129 * uv.x - 10.433 * uv.y;
    const double fall = 0.9129 * greenU + 10.433 * greenV;
    if (shift > 0 && fall > 0) shift = blue / fall * -std::expm1(-shift * fall / blue);
    const double u = uv.x + shift * greenU, v = uv.y + shift * greenV;
    const double denominator = 2 * u - 8 * v + 4;
    return {3 * u / denominator, 2 * v / denominator};
}

Matrix3 whiteAdaptationMatrix(WhitePoint neutral, WhitePoint target) {
    const auto from = coneResponse(neutral), to = coneResponse(target);
    Matrix3 scale{};
    for (int i = 0; i < 3; ++i)
        scale[i][i] = to[i] / from[i];
    const Matrix3 bradford = product(inverse(kBradford), product(scale, kBradford));
    Matrix3 rgb = product(inverse(kToXyz), product(bradford, kToXyz));
    // A grey keeps its luminance, so that the control changes colour and not exposure.
    double luminance = 0;
    const double weights[3] = {0.2126, 0.7152, 0.0722};
    for (int i = 0; i < 3; ++i)
        luminance += weights[i] * (rgb[i][0] + rgb[i][1] + rgb[i][2]);
    for (auto& row : rgb)
        for (double& value : row)
            value /= luminance;
    return rgb;
}

} // namespace kelvaro
