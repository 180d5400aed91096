#include "DomainSteps.h"

#include "develop/kernels/Kernels.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvaro::test {
namespace {

const double kGrey = std::log2(0.18);

double logNorm(const Rgb& c) {
    return boundedLog2(norm(c) > 0.0000153 ? norm(c) : 0.0000153);
}

Rgb coefficients(const Rgba& mean, double eps) {
    const double variance = mean[1] - mean[0] * mean[0];
    const double v = variance > 0 ? variance : 0;
    const double a = v / (v + eps);
    return {a, mean[0] * (1 - a), 0};
}

Rgb gained(const Sample& sample, const std::vector<double>& p) {
    const Rgb s = rgb(sample.inputs[0]);
    const Rgba& guide = sample.inputs[1];
    const double sh = p[0], hi = p[1], shift = p[2];
    const double d = guide[0] * logNorm(s) + guide[1] + (1 - guide[0]) * shift - kGrey;
    const double stops = sh > 1 ? 3.3 + 1.4 * (sh - 1) : sh > 0 ? sh * 3.3 : sh * 1.5;
    const double deep = 0.6 + 0.4 * smoothstep(-10.5, -7.5, d);
    const double shadow = (1 - smoothstep(-7, 0, d)) * deep * stops;
    const double highlight = smoothstep(0, 4, d) * hi * (hi < 0 ? 1.75 : 0.8);
    const double mid = guide[2] / (1 + std::abs(guide[2]) * 0.6);
    const double gain = std::exp2(shadow + highlight + std::max(shadow, 0.0) * 0.4 * mid);
    return {s[0] * gain, s[1] * gain, s[2] * gain};
}

double sceneCurve(double d, double k) {
    return d + (k - 1) * 1.6 * std::tanh(std::clamp(d / 1.6, -9.0, 9.0));
}

Rgb toned(const Sample& sample, const std::vector<double>& p) {
    const Rgb s = rgb(sample.inputs[0]);
    const double contrast = p[0], whites = p[1], blacks = p[2];
    const double light = luminance(s);
    if (!(light > 0)) return s;
    const double y = boundedLog2(std::max(light, 0.0000001));
    const double k = std::exp2(contrast * (contrast > 0 ? 0.75 : 0.6));
    const double d = sceneCurve(y - kGrey, k);
    const double lo = sceneCurve(p[3], k), blackTop = sceneCurve(p[3] + p[5], k);
    const double hi = sceneCurve(p[4], k), whiteBottom = sceneCurve(p[4] - p[6], k);
    const double dark = 1 - smoothstep(lo, blackTop, d), bright = smoothstep(whiteBottom, hi, d);
    const double gb = blacks * (blacks > 0 ? std::min(1.5, 0.5 * (blackTop - lo)) : 2.5);
    const double gw = whites * (whites < 0 ? std::min(1.5, 0.5 * (hi - whiteBottom)) : 1.25);
    const double gain = std::exp2(kGrey + d - y + gb * dark + gw * bright);
    return {s[0] * gain, s[1] * gain, s[2] * gain};
}

// The steps one after another.
Rgb rawToned(const Sample& sample, const std::vector<double>& p) {
    Sample lit = sample;
    const Rgb c = gained(sample, {p[0], p[1], p[2]});
    if (p[0] != 0 || p[1] != 0) std::copy(c.begin(), c.end(), lit.inputs[0].begin());
    return toned(lit, {p.begin() + 3, p.end()});
}

Rgb bitmapToned(const Sample& sample, const std::vector<double>& p) {
    Sample scene = sample;
    const Rgb c = toScene(rgb(sample.inputs[0]));
    std::copy(c.begin(), c.end(), scene.inputs[0].begin());
    return toBitmap(rawToned(scene, p));
}

} // namespace

TEST(GuideKernels, followTheirSteps) {
    Comparison how;
    compareAllForms(
        kernel::twLogLuma(), {{}},
        [](const Sample& s, const auto&) -> Rgb {
            const double light = luminance(rgb(s.inputs[0]));
            const double y = boundedLog2((light > 0 ? light : 0) + 0.0005);
            return {y, y * y, 0};
        },
        how);
    compareAllForms(
        kernel::rawLogNorm(), {{}},
        [](const Sample& s, const auto&) -> Rgb {
            const double y = logNorm(rgb(s.inputs[0]));
            return {y, y * y, 0};
        },
        how);
    const auto guide = [](const Sample& s, const std::vector<double>& p) {
        return coefficients(s.inputs[0], p[0]);
    };
    compareAllForms(kernel::twGuideAB(), {{0.12}}, guide, how);
    compareAllForms(kernel::rawGuide(), {{0.06}, {0.35}}, guide, how);
    how.guides = true;
    how.low = -16; // log luminance
    how.high = 5;
    compareAllForms(
        kernel::rawApplyAB(), {{}},
        [](const Sample& s, const auto&) -> Rgb {
            const double f = s.inputs[0][0] * s.inputs[1][0] + s.inputs[0][1];
            return {f, f * f, 0};
        },
        how);
    compareAllForms(
        kernel::rawMidDetail(), {{}},
        [](const Sample& s, const auto&) -> Rgb {
            const double y1 = s.inputs[1][0], a = s.inputs[0][0], b = s.inputs[0][1];
            return {a, b, y1 - (a * y1 + b)};
        },
        how);
}

TEST(GuideKernels, knownValues) {
    Sample s;
    s.inputs[0] = {0.25 - 0.0005, 0.25 - 0.0005, 0.25 - 0.0005, 1};
    EXPECT_NEAR(vectorPixel(kernel::twLogLuma(), s, {})[0], -2, 1e-6);
    s.inputs[0] = {2, 4.12, 0, 1}; // variance 0.12: half base, half mean
    EXPECT_NEAR(vectorPixel(kernel::twGuideAB(), s, {0.12})[0], 0.5, 1e-5);
    EXPECT_NEAR(vectorPixel(kernel::twGuideAB(), s, {0.12})[1], 1.0, 1e-5);
}

TEST(SceneToneKernels, followTheirSteps) {
    Comparison how;
    how.guides = true;
    compareAllForms(kernel::rawGain(),
                    {{1, 0, 0}, {-1, 0, 0}, {0, 1, 0}, {0, -1, 0.3}, {2, -1, -0.7}, {0.4, 0.2, 0}},
                    gained, how);
    compareAllForms(kernel::sceneTone(),
                    {{1, 0, 0, -6, 2.5, 3, 2},
                     {-1, 0, 0, -6, 2.5, 3, 2},
                     {0, 1, -1, -4, 3.2, 1.5, 2.7},
                     {0.5, -1, 1, -9, 4.5, 3, 3},
                     {-0.3, 0.6, 0.6, -3, 0.5, 2, 1.5}},
                    toned, how);
}

TEST(SceneToneKernels, severalStepsInOne) {
    Comparison how;
    how.guides = true;
    const std::vector<std::vector<double>> sets = {
        {1, 0, 0, 0, 0, 0, -6, 2.5, 3, 2},          {0, 0, 0, 1, 0, 0, -6, 2.5, 3, 2},
        {0, 0, 0, -1, 0.5, -0.5, -6, 2.5, 3, 2},    {0.3, -0.3, 0.2, 0.2, 0.1, -0.1, -6, 2.5, 3, 2},
        {-1, 1, -2, 0.6, -1, 1, -4, 3.2, 1.5, 2.7}, {2, -1, 0.3, -0.3, 0.6, 0.6, -3, 0.5, 2, 1.5}};
    compareAllForms(kernel::bitmapTone(), sets, bitmapToned, how);
    compareAllForms(kernel::rawTone(), sets, rawToned, how);
    how.low = 0;
    how.high = 1;
    compareAllForms(kernel::bitmapTone(), sets, bitmapToned, how);
}

TEST(SceneToneKernels, neutralControlsReturnThePixelItself) {
    for (const Sample& s : samplesFor(kernel::sceneTone(), {.specials = false})) {
        const Rgb tone = vectorPixel(kernel::sceneTone(), s, {0, 0, 0, -6, 2.5, 3, 2});
        const Rgb gain = vectorPixel(kernel::rawGain(), s, {0, 0, 0.5});
        ASSERT_EQ(tone, rgb(s.inputs[0]));
        ASSERT_EQ(gain, rgb(s.inputs[0]));
    }
}

TEST(SceneToneKernels, knownValues) {
    Sample s;
    s.inputs[0] = {0.18, 0.18, 0.18, 1};
    s.inputs[1] = {1, 0, 0, 1}; // the base is the pixel itself
    EXPECT_NEAR(vectorPixel(kernel::rawGain(), s, {2, -1, 0})[0], 0.18, 1e-6) << "grey stays";
    s.inputs[0] = {2.88, 2.88, 2.88, 1}; // 4 stops above grey: highlights at full weight
    EXPECT_NEAR(vectorPixel(kernel::rawGain(), s, {0, -1, 0})[0], 2.88 * std::exp2(-1.75), 1e-4);
    EXPECT_NEAR(vectorPixel(kernel::rawGain(), s, {0, 1, 0})[0], 2.88 * std::exp2(0.8), 1e-4);
    const double dark =
        0.18 / 128; // 7 stops below: the whole lift but for the deepest shadows' share
    const double deep = 0.6 + 0.4 * smoothstep(-10.5, -7.5, -7);
    s.inputs[0] = {dark, dark, dark, 1};
    EXPECT_NEAR(vectorPixel(kernel::rawGain(), s, {1, 0, 0})[0], dark * std::exp2(3.3 * deep),
                1e-6);
    EXPECT_NEAR(vectorPixel(kernel::rawGain(), s, {2, 0, 0})[0], dark * std::exp2(4.7 * deep),
                1e-6);
    // Middle grey does not move with contrast, and a stop and a half far above it gains 1.6 (k -
    // 1).
    s.inputs[0] = {0.18, 0.18, 0.18, 1};
    EXPECT_NEAR(vectorPixel(kernel::sceneTone(), s, {1, 0, 0, -6, 5, 3, 3})[0], 0.18, 1e-6);
    s.inputs[0] = {23.04, 23.04, 23.04, 1}; // 7 stops
    const double offset = (std::exp2(0.75) - 1) * 1.6 * std::tanh(7 / 1.6);
    EXPECT_NEAR(vectorPixel(kernel::sceneTone(), s, {1, 0, 0, -6, 5, 3, 3})[0],
                23.04 * std::exp2(offset), 1e-3);
    s.inputs[0] = {-0.5, 0.1, 0.1, 1}; // no luminance
    EXPECT_EQ(vectorPixel(kernel::sceneTone(), s, {1, 1, 1, -6, 2.5, 3, 2})[0], -0.5);
}

} // namespace kelvaro::test
