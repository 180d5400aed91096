#include "DomainSteps.h"

#include "develop/kernels/Kernels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace kelvaro::test {
namespace {

double logLight(const Rgba& c) {
    const double light = luminance(rgb(c));
    return boundedLog2(notBelowZero(light) + 0.0005);
}

double perceptual(double light) {
    return std::pow(light, 1 / 2.2);
}

Rgb clarified(const Sample& sample, const std::vector<double>& p) {
    Rgb c = rgb(sample.inputs[0]);
    const Rgba& guide = sample.inputs[2];
    const double y = logLight(sample.inputs[0]), originalY = logLight(sample.inputs[1]);
    const double base = p[2] > 0.5 ? guide[0] * originalY + guide[1] + (y - originalY) : y;
    if (p[1] != 0) {
        const double pb = perceptual(std::min(1.0, std::exp2(base)));
        const double mid = smoothstep(0.02, 0.25, pb) * (1 - smoothstep(0.75, 1, pb));
        const double e = std::exp(2 * clamped(y - base, -6, 6));
        c = scaled(c, std::exp2(p[1] * 0.7 * (e - 1) / (e + 1) * mid));
    }
    if (p[0] != 0) {
        const double L = notBelowZero(luminance(c)), l = perceptual(L);
        if (L > 0.000001 && l < 1)
            c = scaled(c, std::pow(std::pow(l, std::exp2(-0.9 * p[0])), 2.2) / L);
    }
    return c;
}

Rgb vignetted(const Sample& sample, const std::vector<double>& p) {
    const double dx = sample.x - p[0], dy = sample.y - p[1];
    const double qx = p[6] * dx - p[7] * dy - p[2], qy = p[7] * dx + p[6] * dy - p[3];
    const double radius =
        std::hypot(qx / std::max(p[4], 1.0), qy / std::max(p[5], 1.0)) / std::numbers::sqrt2;
    const double t = clamped((radius - 0.35) / 0.65, 0, 1);
    const double mask = t * t * t * (t * (6 * t - 15) + 10);
    double gain = std::exp2(2 * p[8] * mask);
    if (p[8] > 0) {
        const double y = notBelowZero(luminance(rgb(sample.inputs[0])));
        gain = std::max(1.0, gain / (1 + y * (gain - 1)));
    }
    return scaled(rgb(sample.inputs[0]), gain);
}

// The hash is defined in single precision; everything after the noise is done in double here.
float hash(float x, float y) {
    float u = x * 0.1031f, v = y * 0.1030f;
    u -= std::floor(u);
    v -= std::floor(v);
    const float first = u * (v + 33.33f), second = v * (u + 33.33f);
    const float d = first + second;
    u += d;
    v += d;
    const float h = (u + v) * u;
    return h - std::floor(h);
}

double noise(float x, float y) {
    const float i = std::floor(x), j = std::floor(y);
    const double f = x - i, g = y - j;
    const double s = f * f * (3 - 2 * f), t = g * g * (3 - 2 * g);
    const double below = hash(i, j) + (hash(i + 1, j) - hash(i, j)) * s;
    const double above = hash(i, j + 1) + (hash(i + 1, j + 1) - hash(i, j + 1)) * s;
    return below + (above - below) * t - 0.5;
}

Rgb grained(const Sample& sample, const std::vector<double>& p) {
    const auto size = static_cast<float>(p[1]), scale = static_cast<float>(p[2]);
    const float x = static_cast<float>(sample.x) / scale, y = static_cast<float>(sample.y) / scale;
    const double fine = noise(x / size, y / size) * std::min(1.0, p[1] * p[2]);
    const double medium =
        noise(x / (2 * size) + 41, y / (2 * size) + 17) * std::min(1.0, 2 * p[1] * p[2]);
    const double coarse =
        noise(x / (4 * size) - 23, y / (4 * size) + 59) * std::min(1.0, 4 * p[1] * p[2]);
    const double n = 1.4 * (p[3] * fine + p[4] * medium + p[5] * coarse);
    const Rgb s = rgb(sample.inputs[0]);
    const double L = luminance(s), l = perceptual(notBelowZero(L) + 0.000001);
    const double in = clamped(l, 0, 1), strength = 0.3 + 2.4 * in * (1 - in);
    const double Ln = std::pow(notBelowZero(l + n * p[0] * 0.14 * strength), 2.2);
    Rgb c = scaled(s, std::min(64.0, Ln / std::max(0.000001, L)));
    const double lift = notBelowZero(Ln - luminance(c));
    for (double& v : c)
        v += lift;
    return c;
}

Sample greyAt(double value, double x, double y) {
    Sample s;
    for (Rgba& input : s.inputs)
        input = {value, value, value, 1};
    s.x = x;
    s.y = y;
    return s;
}

} // namespace

TEST(FinishKernels, followTheirSteps) {
    Comparison how;
    how.exceptions = 0.0005; // a luminance of nothing, left over from larger terms of both signs
    how.guides = false;
    compareAllForms(kernel::kelvaroTone(),
                    {{0, 1, 0, 0}, {0.6, 0, 1, 0}, {-1, 0, 0, 0}, {1, -0.5, 0, 0}}, clarified, how);
    // Places reach 80,000 pixels, where every one still counts.
    compareAllForms(kernel::twVignette(),
                    {{40000.5, 7000, 0, 0, 40000, 7000, 1, 0, -1},
                     {40000.3, 7000.7, 310, -120, 20000, 3500, std::cos(0.1), std::sin(0.1), 1},
                     {80500, 6000, 0, 0, 700, 500, std::cos(-0.5), std::sin(-0.5), 0.4}},
                    vignetted, how);
    how.infinities = false; // minus infinity times no light is none or infinite: see below
    const double r = 1 / std::sqrt(2 * 0.35 * 0.35 + 1.35 * 1.35);
    compareAllForms(kernel::kelvaroGrain(),
                    {{0.5, 1.2, 1, 0.35 * r, 1.35 * r, 0.35 * r},
                     {1, 0.36, 0.3, 1, 0, 0},
                     {0.25, 20, 1, 0, 0.6, 0.8},
                     {1, 3.7, 0.11, 0.6, 0, 0.8}},
                    grained, how);
}

TEST(FinishKernels, clarityWithAGuide) {
    Comparison how;
    how.low = 0;
    how.high = 1; // here the third input is a guide with coefficients of 0 … 1
    compareAllForms(kernel::kelvaroTone(), {{0, 1, 1, 0}, {0.4, -1, 1, 0}}, clarified, how);
    // A flat base of -3 under a pixel at -2: the detail is one stop, in the middle of the range.
    Sample s = greyAt(0.25 - 0.0005, 0.5, 0.5);
    s.inputs[2] = {0, -3, 0, 1};
    const double pb = std::pow(0.125, 1 / 2.2);
    const double mid = smoothstep(0.02, 0.25, pb) * (1 - smoothstep(0.75, 1, pb));
    EXPECT_NEAR(vectorPixel(kernel::kelvaroTone(), s, {0, 1, 1, 0})[0],
                0.2495 * std::exp2(0.7 * std::tanh(1) * mid), 2e-6);
    EXPECT_EQ(vectorPixel(kernel::kelvaroTone(), s, {0, 0, 1, 0})[0], static_cast<float>(0.2495));
}

TEST(FinishKernels, vignetteKnownValues) {
    const std::vector<double> darken = {3000, 2000, 0, 0, 3000, 2000, 1, 0, -1};
    EXPECT_NEAR(vectorPixel(kernel::twVignette(), greyAt(0.8, 0, 0), darken)[0], 0.2, 1e-6)
        << "two stops at the corner";
    EXPECT_EQ(vectorPixel(kernel::twVignette(), greyAt(0.75, 3000 + 0.35 * 3000, 2000), darken)[0],
              0.75)
        << "untouched inside";
    std::vector<double> lighten = darken;
    lighten[8] = 1;
    for (const double v : {0.1, 1.0, 1.2, 9.0})
        EXPECT_GE(vectorPixel(kernel::twVignette(), greyAt(v, 0, 0), lighten)[0],
                  static_cast<float>(v));
}

// The pattern belongs to the place, far out as well, and black receives it.
TEST(FinishKernels, grainKnownValues) {
    const std::vector<double> grain = {1, 1.2, 1, 0, 1, 0};
    for (const double x : {12.5, 99999.5}) {
        const double n =
            1.4 * noise(static_cast<float>(x) / (2 * 1.2f) + 41, 777.5f / (2 * 1.2f) + 17);
        const double l = std::pow(0.18 + 1e-6, 1 / 2.2);
        const double expected =
            std::pow(l + n * 0.14 * (0.3 + 2.4 * l * (1 - l)), 2.2) / 0.18 * 0.18;
        EXPECT_NEAR(vectorPixel(kernel::kelvaroGrain(), greyAt(0.18, x, 777.5), grain)[0], expected,
                    2e-6);
    }
    for (int bright = 1; bright < 8;
         bright++) { // infinite channels stay so, the others get 64 times
        Sample s = greyAt(0.25, 12.5, 777.5);
        for (int k = 0; k < 3; k++)
            if (bright >> k & 1) s.inputs[0][k] = INFINITY;
        const Rgb expected = grained(s, grain), c = vectorPixel(kernel::kelvaroGrain(), s, grain);
        for (int k = 0; k < 3; k++) {
            EXPECT_EQ(c[k], expected[k]) << bright;
            EXPECT_EQ(c[k], std::isinf(s.inputs[0][k]) ? INFINITY : 16) << bright;
        }
    }
    double most = 0;
    for (double x = 0.5; x < 40; x++)
        most = std::max(most, vectorPixel(kernel::kelvaroGrain(), greyAt(0, x, 3.5), grain)[1]);
    EXPECT_GT(most, 1e-5);
}

} // namespace kelvaro::test
