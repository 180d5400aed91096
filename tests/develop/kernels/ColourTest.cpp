#include "KernelTest.h"

#include "develop/kernels/Kernels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace kelvaro::test {
namespace {

constexpr double kToP3[3][3] = {
    {0.8224621, 0.1775380, 0}, {0.0331941, 0.9668058, 0}, {0.0170827, 0.0723974, 0.9105199}};
constexpr double kFromP3[3][3] = {
    {1.2249401, -0.2249404, 0}, {-0.0420569, 1.0420571, 0}, {-0.0196376, -0.0786361, 1.0982735}};
const std::vector<double> kRowsOfSrgb = {1, 0, 0, 0, 1, 0, 0, 0, 1};
const std::vector<double> kRowsOfP3 = {0.8224621, 0.1775380, 0,         0.0331941, 0.9668058,
                                       0,         0.0170827, 0.0723974, 0.9105199};

// What a row does not read does not count, not even when it is infinite.
Rgb product(const double (&m)[3][3], const Rgb& c) {
    Rgb out{};
    for (int i = 0; i < 3; i++)
        for (int k = 0; k < 3; k++)
            if (m[i][k] != 0) out[i] += m[i][k] * c[k];
    return out;
}

double cubeRoot(double x) {
    return x < 0 ? -std::pow(-x, 1 / 3.0) : std::pow(x, 1 / 3.0);
}

Rgb toLab(const Rgb& c) {
    const double cones[3][3] = {{0.4122214708, 0.5363325363, 0.0514459929},
                                {0.2119034982, 0.6806995451, 0.1073969566},
                                {0.0883024619, 0.2817188376, 0.6299787005}};
    Rgb lms = product(cones, c);
    for (double& v : lms)
        v = cubeRoot(v);
    const double axes[3][3] = {{0.2104542553, 0.7936177850, -0.0040720468},
                               {1.9779984951, -2.4285922050, 0.4505937099},
                               {0.0259040371, 0.7827717662, -0.8086757660}};
    return product(axes, lms);
}

Rgb toRgb(double L, double a, double b) {
    const double l = L + 0.3963377774 * a + 0.2158037573 * b;
    const double m = L - 0.1055613458 * a - 0.0638541728 * b;
    const double s = L - 0.0894841775 * a - 1.2914855480 * b;
    const double back[3][3] = {{4.0767416621, -3.3077115913, 0.2309699292},
                               {-1.2684380046, 2.6097574011, -0.3413193965},
                               {-0.0041960863, -0.7034186147, 1.7076147010}};
    return product(back, {l * l * l, m * m * m, s * s * s});
}

double p3Min(const Rgb& c) {
    const Rgb p = product(kToP3, c);
    return std::min({p[0], p[1], p[2]});
}

// The largest factor up to `high` that is not beyond, by `steps` bisections from `low`.
template<class Beyond>
double bisect(double low, double high, int steps, Beyond beyond) {
    for (int i = 0; i < steps; i++) {
        const double middle = (low + high) / 2;
        (beyond(middle) ? high : low) = middle;
    }
    return low;
}

// `cells` moves each bisection's result by so many of its last intervals, and `edge` the boundary
// by that share of the colour: where a colour lies on the boundary within rounding, either side is
// as right.
Rgb coloured(const Sample& sample, const std::vector<double>& p, int cells, double edge) {
    const double angle = p[0], sat = p[1], vib = p[2];
    const Rgb s = rgb(sample.inputs[0]), lab = toLab(s);
    const double C = std::hypot(lab[1], lab[2]);
    if (C < 0.000001 || lab[0] <= 0) return s;
    const double a = std::cos(angle) * lab[1] - std::sin(angle) * lab[2];
    const double b = std::sin(angle) * lab[1] + std::cos(angle) * lab[2];
    const double c = std::min(C / 0.3, 1.0), h = std::atan2(b, a);
    const double skin = vib > 0 ? 0.65 * std::exp(-(h - 0.87) * (h - 0.87) / 0.12) : 0;
    double k = std::max(1 + sat + vib * (1 - std::pow(c, std::abs(vib))) * (1 - skin), 0.0);
    const double margin = edge * std::max({std::abs(s[0]), std::abs(s[1]), std::abs(s[2])});
    const auto beyond = [&](double f) { return p3Min(toRgb(lab[0], a * f, b * f)) < margin; };
    if (k > 1) {
        if (beyond(1)) {
            k = 1;
        } else if (beyond(k)) {
            const double lo = bisect(1, k, 10, beyond) + cells * (k - 1) / 1024;
            const double soft = 1 + 0.8 * (lo - 1), room = lo - soft;
            if (k > soft) k = soft + room * (1 - std::exp(-(k - soft) / std::max(room, 0.000001)));
        }
    }
    if (p3Min(s) >= 0 && beyond(k)) k = bisect(0, k, 12, beyond) + cells * k / 4096;
    return toRgb(lab[0], a * k, b * k);
}

Rgb compressed(const Sample& sample, const std::vector<double>&) {
    const Rgb s = rgb(sample.inputs[0]);
    const Rgb p = product(kToP3, s);
    const double L = std::clamp(luminance(s), 0.0, 1.0);
    const double hi = std::max({p[0], p[1], p[2]}) - L, lo = std::min({p[0], p[1], p[2]}) - L;
    double k = 1;
    if (hi > 0) k = std::min(k, (1 - L) / hi);
    if (lo < 0) k = std::min(k, -L / lo);
    if (k >= 1 - 1e-5 || (hi <= 1 - L + 2e-6 && lo >= -L - 2e-6)) return s;
    return product(kFromP3, {L + (p[0] - L) * k, L + (p[1] - L) * k, L + (p[2] - L) * k});
}

Rgb fitted(const Sample& sample, const std::vector<double>& rows) {
    const Rgb s = rgb(sample.inputs[0]);
    const auto outside = [&](const Rgb& c) {
        double low = 1e9, high = -1e9;
        for (int i = 0; i < 3; i++) {
            const double t = rows[3 * i] * c[0] + rows[3 * i + 1] * c[1] + rows[3 * i + 2] * c[2];
            low = std::min(low, t);
            high = std::max(high, t);
        }
        return std::max(-0.0005 - low, high - 1.0005) > 0;
    };
    if (!outside(s)) return s;
    const Rgb lab = toLab(s);
    if (lab[0] <= 0) return {0, 0, 0};
    if (lab[0] >= 1) return s;
    const double f = bisect(0, 1, 14, [&](double middle) {
        return outside(toRgb(lab[0], lab[1] * middle, lab[2] * middle));
    });
    return toRgb(lab[0], lab[1] * f, lab[2] * f);
}

Rgb shown(const Sample& sample, const std::vector<double>& rows) {
    const Rgb c = fitted(sample, rows);
    double high = -1e9;
    for (int i = 0; i < 3; i++)
        high = std::max(high, rows[3 * i] * c[0] + rows[3 * i + 1] * c[1] + rows[3 * i + 2] * c[2]);
    return high > 1.001 ? Rgb{1, 1, 1} : c;
}

Sample pixel(double r, double g, double b) {
    Sample s;
    s.inputs[0] = {r, g, b, 1};
    return s;
}

} // namespace

TEST(ColourKernels, followTheirSteps) {
    Comparison how;
    compareAllForms(
        kernel::twMono(), {{}},
        [](const Sample& s, const auto&) -> Rgb {
            const double L = toLab(rgb(s.inputs[0]))[0];
            return {L * L * L, L * L * L, L * L * L};
        },
        how);
    how.mixesChannels = true;
    how.exceptions = 0.001;
    const auto with = [](int cells, double edge) {
        return [cells, edge](const Sample& s, const std::vector<double>& p) {
            return coloured(s, p, cells, edge);
        };
    };
    how.neighbours = {with(-1, 0), with(1, 0), with(0, -2e-6), with(0, 2e-6)};
    compareAllForms(kernel::twColour(),
                    {{0.3, 0, 0},
                     {-1.5, 0, 0},
                     {0, 1, 0},
                     {0, -1, 0},
                     {0, 0, 1},
                     {0, 0, -1},
                     {0, 0, 0.35},
                     {0.7, 0.4, 0.6},
                     {0, -0.5, 0.8}},
                    with(0, 0), how);
    how.neighbours = {};
    compareAllForms(kernel::twGamut(), {{}}, compressed, how);
    how.infinities = false; // differences of infinities have no lightness: see below
    how.exceptions = 0;
    how.tolerance = 2e-4; // the last of 14 bisections is worth 6e-5 of the chroma
    how.low = -0.3;       // display-linear
    how.high = 1.5;
    compareAllForms(kernel::twOutputGamut(), {kRowsOfSrgb, kRowsOfP3}, fitted, how);
    how.exceptions = 0.001; // lightnesses of 1 within rounding, and its edge
    compareAllForms(kernel::displayGamut(), {kRowsOfSrgb, kRowsOfP3}, shown, how);
}

TEST(ColourKernels, whatIsNotANumberStaysSo) {
    for (const Kernel* kernel : {&kernel::twMono(), &kernel::twGamut()})
        EXPECT_TRUE(std::isnan(vectorPixel(*kernel, pixel(NAN, NAN, NAN), {})[1])) << kernel->name;
    EXPECT_TRUE(
        std::isnan(vectorPixel(kernel::twColour(), pixel(NAN, NAN, NAN), {0.1, 0.2, 0.3})[1]));
    EXPECT_TRUE(
        std::isnan(vectorPixel(kernel::twOutputGamut(), pixel(NAN, NAN, NAN), kRowsOfP3)[1]));
}

// Without a lightness there is nothing to reduce the chroma at: such a pixel is returned as it is,
// and shown as bright or as dark as the target goes in the channels that are infinite.
TEST(ColourKernels, outputGamutKeepsInfinity) {
    for (const auto& rows : {kRowsOfSrgb, kRowsOfP3})
        for (int bright = -7; bright < 8; bright++) {
            Rgb c{0.25, 0.5, 0.125};
            for (int k = 0; k < 3; k++)
                if (std::abs(bright) >> k & 1) c[k] = bright < 0 ? -INFINITY : INFINITY;
            const Sample s = pixel(c[0], c[1], c[2]);
            EXPECT_EQ(vectorPixel(kernel::twOutputGamut(), s, rows), c) << bright;
            const Rgb seen = vectorPixel(kernel::displayGamut(), s, rows);
            for (int k = 0; k < 3; k++) {
                EXPECT_FALSE(std::isnan(seen[k])) << bright;
                if (bright < 0) {
                    EXPECT_EQ(seen[k], c[k]) << bright;
                } else if (std::isinf(c[k])) {
                    EXPECT_GE(seen[k], 1) << bright;
                }
            }
        }
}

TEST(ColourKernels, greysKeepTheirColour) {
    for (const double v : {0.0, 0.01, 0.18, 0.5, 1.0, 7.0}) {
        const Rgb same = {exact(v), exact(v), exact(v)};
        EXPECT_EQ(vectorPixel(kernel::twColour(), pixel(v, v, v), {1.2, 0.8, 0.5}), same);
        const Rgb mono = vectorPixel(kernel::twMono(), pixel(v, v, v), {});
        EXPECT_NEAR(mono[0], v, 2e-6 * std::max(v, 1.0));
    }
}

TEST(ColourKernels, saturationOfMinusOneLeavesTheLightness) {
    const Sample s = pixel(0.7, 0.2, 0.05);
    const double L = toLab(rgb(s.inputs[0]))[0];
    for (const double v : vectorPixel(kernel::twColour(), s, {0, -1, 0}))
        EXPECT_NEAR(v, L * L * L, 2e-6);
    for (const double v : vectorPixel(kernel::twMono(), s, {}))
        EXPECT_NEAR(v, L * L * L, 2e-6);
}

TEST(ColourKernels, aQuarterTurnSwapsTheChromaAxes) {
    const Sample s = pixel(0.4, 0.35, 0.3); // muted: no boundary near
    const Rgb before = toLab(rgb(s.inputs[0]));
    const Rgb after = toLab(vectorPixel(kernel::twColour(), s, {std::numbers::pi / 2, 0, 0}));
    EXPECT_NEAR(after[0], before[0], 1e-6);
    EXPECT_NEAR(after[1], -before[2], 1e-6);
    EXPECT_NEAR(after[2], before[1], 1e-6);
}

// Inside Display P3 nothing moves, up to white and the primaries; outside, colours land on the
// surface.
TEST(ColourKernels, displayP3IsKeptBitForBit) {
    for (int i = 0; i <= 1000; i++) {
        const double r = (i % 10) / 9.0, g = (i / 10 % 10) / 9.0, b = (i / 100) / 9.99;
        const Sample s = pixel(exact(r), exact(g), exact(b));
        ASSERT_EQ(vectorPixel(kernel::twGamut(), s, {}), rgb(s.inputs[0]))
            << r << ' ' << g << ' ' << b;
    }
    for (const Sample& s : {pixel(1.4, 0.2, 0.1), pixel(-0.3, 0.9, 0.1), pixel(0.2, 0.3, 1.6)}) {
        const Rgb p = product(kToP3, vectorPixel(kernel::twGamut(), s, {}));
        const auto [low, high] = std::minmax({p[0], p[1], p[2]});
        EXPECT_GE(low, -2e-6);
        EXPECT_LE(high, 1 + 2e-6);
        EXPECT_TRUE(low < 1e-5 || high > 1 - 1e-5) << "on the surface";
    }
}

TEST(ColourKernels, outputGamutFitsTheTarget) {
    EXPECT_EQ(vectorPixel(kernel::twOutputGamut(), pixel(3, 2, 0.5), kRowsOfSrgb),
              (Rgb{3, 2, 0.5}));
    EXPECT_EQ(vectorPixel(kernel::twOutputGamut(), pixel(-0.5, 0, -0.25), kRowsOfSrgb),
              (Rgb{0, 0, 0}));
    const Sample green = pixel(-0.25, 0.75, -0.0625); // inside P3, outside sRGB
    for (const auto& rows : {kRowsOfSrgb, kRowsOfP3}) {
        const Rgb c = vectorPixel(kernel::twOutputGamut(), green, rows);
        const Rgb before = toLab(rgb(green.inputs[0])), after = toLab(c);
        EXPECT_NEAR(after[0], before[0], 1e-5);
        EXPECT_NEAR(std::atan2(after[2], after[1]), std::atan2(before[2], before[1]), 1e-4);
        for (int i = 0; i < 3; i++) {
            const double t = rows[3 * i] * c[0] + rows[3 * i + 1] * c[1] + rows[3 * i + 2] * c[2];
            EXPECT_GE(t, -0.00051);
            EXPECT_LE(t, 1.00051);
        }
    }
}

} // namespace kelvaro::test
