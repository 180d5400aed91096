#include "KernelTest.h"

#include "develop/kernels/Kernels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace kelvaro::test {
namespace {

Rgb grey(double v) {
    return {v, v, v};
}

Rgb dehazed(const Sample& sample, const std::vector<double>& p) {
    const Rgb s = rgb(sample.inputs[0]);
    const Rgba& model = sample.inputs[1];
    const Rgb air = {p[1], p[2], p[3]};
    double sum = 0, least = s[0] / std::max(air[0], 0.000001);
    for (int k = 0; k < 3; k++) {
        const double a = std::max(air[k], 0.000001);
        sum += (s[k] > 0 ? s[k] : 0) / a; // NaN counts as 0
        least = s[k] / a < least ? s[k] / a : least;
    }
    const double guide = std::min(sum / 3, 1.5);
    const double depth = clamped(std::min(model[0] * guide + model[1], model[2]), 0, 1);
    Rgb c = s;
    if (p[0] > 0) {
        const double t = std::max(std::max(1 - 0.85 * p[0] * depth, 0.2), clamped(1 - least, 0, 1));
        for (int k = 0; k < 3; k++)
            c[k] = (s[k] - air[k]) / t + air[k];
        if (luminance(c) < 0) c = grey(0);
    } else {
        const double veil = 0.35 * p[0] * p[0] * depth;
        for (int k = 0; k < 3; k++)
            c[k] = s[k] + (air[k] - s[k]) * veil;
    }
    return c;
}

Rgb linear(const Sample& s, const std::vector<double>& p) {
    const double dx = p[2] - p[0], dy = p[3] - p[1];
    const double t =
        ((s.x - p[0]) * dx + (s.y - p[1]) * dy) / std::max(dx * dx + dy * dy, 0.000001);
    const double w = 1 - smoothstep(0, 1, t);
    return grey(w * (1 - p[4]) + (1 - w) * p[4]);
}

Rgb radial(const Sample& s, const std::vector<double>& p) {
    const double dx = s.x - p[0], dy = s.y - p[1];
    const double qx = (p[4] * dx + p[5] * dy) / std::max(p[2], 0.001);
    const double qy = (-p[5] * dx + p[4] * dy) / std::max(p[3], 0.001);
    const double w = 1 - smoothstep(1 - std::max(p[6], 0.002), 1, std::hypot(qx, qy));
    return grey(w * (1 - p[7]) + (1 - w) * p[7]);
}

Rgb local(const Sample& sample, const std::vector<double>& p) {
    const double exposure = p[0], temperature = p[1], tint = p[2], contrast = p[3];
    const double highlights = p[4], shadows = p[5], clarity = p[6], saturation = p[7];
    Rgb c = rgb(sample.inputs[0]);
    const double w = clamped(sample.inputs[1][0], 0, 1);
    if (!(w > 0)) return c;
    const auto multiply = [&c](double f) {
        for (double& v : c)
            v *= f;
    };
    multiply(std::exp2(exposure * w));
    if (temperature != 0 || tint != 0) {
        const double before = luminance(c);
        c[0] *= std::exp2(0.35 * temperature * w);
        c[1] *= std::exp2(-0.25 * tint * w);
        c[2] *= std::exp2(-0.35 * temperature * w);
        if (luminance(c) > 0.000001) multiply(before / luminance(c));
    }
    if (highlights != 0 || shadows != 0) {
        const double l = std::pow(notBelowZero(luminance(c)), 1 / 2.2);
        const double hi = smoothstep(0.35, 1, l), sh = 1 - smoothstep(0, 0.55, l);
        multiply(
            std::exp2(w * (highlights * (highlights < 0 ? 1.2 : 0.8) * hi + shadows * 1.4 * sh)));
    }
    if (clarity != 0) {
        const Rgba& g = sample.inputs[2];
        const double y = boundedLog2(notBelowZero(luminance(rgb(sample.inputs[3]))) + 0.0005);
        const double base = g[0] * y + g[1];
        const double b = std::pow(clamped(std::exp2(base), 0.0, 1.0), 1 / 2.2);
        const double mid = smoothstep(0.02, 0.25, b) * (1 - smoothstep(0.75, 1, b));
        const double detail = clamped((1 - g[0]) * y - g[1], -6.0, 6.0);
        multiply(std::exp2(clarity * w * 0.7 * std::tanh(detail) * mid));
    }
    if (contrast != 0) {
        const double L = notBelowZero(luminance(c)), l = std::pow(L, 1 / 2.2);
        if (L > 0.000001 && l < 1) {
            const double k = std::exp2(contrast * w * 1.2);
            const double t = l < 0.46 ? l / 0.46 : (1 - l) / 0.54;
            const double v = t / (k + (1 - k) * t);
            multiply(std::min(std::pow(l < 0.46 ? 0.46 * v : 1 - 0.54 * v, 2.2) / L, 64.0));
        }
    }
    if (saturation != 0) {
        const double Y = luminance(c);
        for (double& v : c)
            v = notBelowZero(Y + (v - Y) * notBelowZero(1 + saturation * w));
    }
    return c;
}

Rgb at(const Kernel& kernel, double x, double y, const std::vector<double>& p) {
    Sample s;
    s.x = x;
    s.y = y;
    return vectorPixel(kernel, s, p);
}

} // namespace

TEST(HazeKernel, followsItsSteps) {
    Comparison how;
    how.mixesChannels = true; // removing haze takes the difference to the airlight times up to 5
    how.exceptions = 0.0005;  // a luminance of nothing
    const std::vector<std::vector<double>> sets = {
        {1, 0.8, 0.85, 1}, {0.3, 0.5, 0.6, 0.7}, {-1, 0.8, 0.85, 1}, {-0.5, 2, 1, 0}};
    compareAllForms(kernel::sceneHaze(), sets, dehazed, how);
    how.low = -0.1;
    how.high = 1;
    compareAllForms(kernel::sceneHaze(), sets, dehazed, how);
}

TEST(HazeKernel, knownValues) {
    Sample s;
    s.inputs[0] = {0.5, 0.5, 0.5, 1};
    s.inputs[1] = {0, 1, 1, 1}; // full depth everywhere
    // The darkest channel allows a transmission of at least 1 - 0.5 = 0.5: (0.5 - 1) / 0.5 + 1 = 0.
    EXPECT_NEAR(vectorPixel(kernel::sceneHaze(), s, {1, 1, 1, 1})[0], 0.0, 1e-6);
    EXPECT_NEAR(vectorPixel(kernel::sceneHaze(), s, {-1, 1, 1, 1})[0], 0.675, 1e-6);
    s.inputs[0] = {0, 0, 0, 1};
    EXPECT_EQ(vectorPixel(kernel::sceneHaze(), s, {1, 0.9, 0.8, 0.7}), grey(0));
    EXPECT_TRUE(std::isfinite(vectorPixel(kernel::sceneHaze(), s, {1, 0, 0, 0})[2]));
}

TEST(MaskKernels, followTheirSteps) {
    Comparison how;
    compareAllForms(
        kernel::twMaskLinear(),
        {{100, 50, 900, 9000, 0}, {40100.3, 0, 40800.7, 400, 1}, {80000, 9, 81000, 9, 0.3}}, linear,
        how);
    compareAllForms(kernel::twMaskRadial(),
                    {{40500, 4000, 900, 5000, 1, 0, 0.5, 0},
                     {80321.7, 8000, 700, 3000, std::cos(1), std::sin(1), 1, 1}},
                    radial, how);
    compareAllForms(
        kernel::twMaskCombine(), {{0}, {1}, {2}},
        [](const Sample& s, const auto& p) {
            const double a = s.inputs[0][0], b = s.inputs[1][0];
            if (p[0] == 0) return grey(a < b ? b : a); // a NaN in the second one counts for nothing
            return grey(a * (p[0] == 1 ? 1 - b : b));
        },
        how);
    compareAllForms(
        kernel::twMaskFinish(), {{0, 0.7}, {1, 1}},
        [](const Sample& s, const auto& p) {
            const double a = s.inputs[0][0];
            return grey(clamped(a * (1 - p[0]) + (1 - a) * p[0], 0, 1) * p[1]);
        },
        how);
}

TEST(MaskKernels, knownValues) {
    const std::vector<double> line = {1000, 0, 3000, 0, 0};
    EXPECT_EQ(at(kernel::twMaskLinear(), 1000, 77, line), grey(1));
    EXPECT_EQ(at(kernel::twMaskLinear(), 3000, 5, line), grey(0));
    EXPECT_NEAR(at(kernel::twMaskLinear(), 2000, 5, line)[0], 0.5, 1e-6);
    EXPECT_EQ(at(kernel::twMaskLinear(), 9, 9, {5, 5, 5, 5, 0}), grey(1)) << "no length";
    const std::vector<double> hard = {500, 500, 200, 100,
                                      0,   1,   0,   0}; // turned a quarter: 100 × 200
    EXPECT_EQ(at(kernel::twMaskRadial(), 500, 699, hard), grey(1));
    EXPECT_EQ(at(kernel::twMaskRadial(), 500, 701, hard), grey(0));
    EXPECT_EQ(at(kernel::twMaskRadial(), 601, 500, hard), grey(0));
    const double edge = at(kernel::twMaskRadial(), 500, 699.8, hard)[0]; // in the band of 0.002
    EXPECT_NEAR(edge, 0.5, 0.01);
    Sample s;
    s.inputs[0] = {0.25, 0, 0, 1};
    s.inputs[1] = {0.75, 0, 0, 1};
    EXPECT_EQ(vectorPixel(kernel::twMaskCombine(), s, {0}), grey(0.75));
    EXPECT_EQ(vectorPixel(kernel::twMaskCombine(), s, {1}), grey(0.0625));
    EXPECT_EQ(vectorPixel(kernel::twMaskCombine(), s, {2}), grey(0.1875));
}

TEST(LocalKernel, followsItsSteps) {
    Comparison how;
    how.exceptions = 0.0005; // a luminance of nothing
    how.guides = true;       // the weight too: below 0 as often as above
    std::vector<std::vector<double>> sets(9, std::vector<double>(8, 0.0));
    for (std::size_t i = 0; i < 8; i++)
        sets[i][i] = i % 2 ? -1 : 0.8;
    sets[8] = {-1.5, 0.3, 0.4, 0.7, -0.6, 0.5, 0.9, 0.4};
    how.mixesChannels = true;
    compareAllForms(kernel::twLocal(), sets, local, how);
    how.low = -0.02;
    how.high = 1;
    compareAllForms(kernel::twLocal(), sets, local, how);
    for (auto& set : sets)
        for (double& p : set)
            p = -p;
    compareAllForms(kernel::twLocal(), sets, local, how);
}

TEST(LocalKernel, knownValues) {
    Sample s;
    s.inputs[0] = {0.2, 0.4, 0.1, 1};
    s.inputs[1] = {0, 0, 0, 1};
    const std::vector<double> all = {1, 1, 1, 1, 1, 1, 1, 1};
    EXPECT_EQ(vectorPixel(kernel::twLocal(), s, all)[1], static_cast<float>(0.4)) << "no weight";
    s.inputs[1] = {NAN, 0, 0, 1};
    EXPECT_EQ(vectorPixel(kernel::twLocal(), s, all)[1], static_cast<float>(0.4));
    s.inputs[1] = {0.5, 0, 0, 1};
    EXPECT_NEAR(vectorPixel(kernel::twLocal(), s, {2, 0, 0, 0, 0, 0, 0, 0})[0], 0.4, 1e-6);
    const Rgb warm = vectorPixel(kernel::twLocal(), s, {0, 1, 0, 0, 0, 0, 0, 0});
    EXPECT_NEAR(luminance(warm), luminance(rgb(s.inputs[0])), 1e-6);
    EXPECT_NEAR(warm[0] / warm[2], 2 * std::exp2(0.35), 1e-5);
    const double pivot = std::pow(0.46, 2.2);
    s.inputs[0] = {pivot, pivot, pivot, 1};
    EXPECT_NEAR(vectorPixel(kernel::twLocal(), s, {0, 0, 0, 1, 0, 0, 0, 0})[0], pivot, 1e-6);
    s.inputs[1] = {1, 1, 1, 1};
    s.inputs[0] = {2e-6, 2e-6, 2e-6, 1}; // lowered contrast lifts black, by 64 at most
    EXPECT_LE(vectorPixel(kernel::twLocal(), s, {0, 0, 0, -20, 0, 0, 0, 0})[0], 2e-6 * 64.01);
}

} // namespace kelvaro::test
