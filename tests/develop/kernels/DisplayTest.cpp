#include "KernelTest.h"

#include "develop/kernels/Kernels.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kelvaro::test {
namespace {

double curve(double x) {
    const double u = std::abs(x) / 0.18;
    return std::copysign(std::min(1.0, 1.017898 * u * (u + 1.7) / (u * (u + 1.2) + 13.0685)), x);
}

Rgb rendered(const Sample& sample, const std::vector<double>&) {
    Rgb c = rgb(sample.inputs[0]);
    for (double& v : c)
        v = std::isnan(v) ? 0 : std::clamp(v, -1000.0, 1000.0);
    const double high = std::max({c[0], c[1], c[2]}), low = std::min({c[0], c[1], c[2]});
    const double over = std::max(high - 1, 0.0), white = over * over / (over * over + 16);
    Rgb out;
    for (int k = 0; k < 3; k++) {
        const double place = high > low ? (c[k] - low) / (high - low) : 0;
        const double v = curve(low) + (curve(high) - curve(low)) * place;
        out[k] = v + (curve(high) - v) * white;
    }
    return out;
}

Rgb render(double r, double g, double b) {
    Sample s;
    s.inputs[0] = {r, g, b, 1};
    return vectorPixel(kernel::rawRendering(), s, {});
}

} // namespace

TEST(OverlayKernels, followTheirSteps) {
    Comparison how;
    compareAllForms(
        kernel::twMaskOverlay(), {{}},
        [](const Sample& s, const auto&) -> Rgb {
            const double alpha = s.inputs[0][3];
            const double weight = notBelowZero(s.inputs[1][0]); // NaN counts as none
            const double a = 0.55 * std::min(weight, 1.0) * alpha;
            const Rgb orange = {1.0 * alpha, 0.17 * alpha, 0};
            Rgb c;
            for (int k = 0; k < 3; k++)
                c[k] = s.inputs[0][k] * (1 - a) + orange[k] * a;
            return c;
        },
        how);
}

TEST(OverlayKernels, clippingFollowsItsSteps) {
    compareAllForms(kernel::twClipping(), {{}}, [](const Sample& s, const auto&) -> Rgb {
        const Rgba& c = s.inputs[0];
        const double p[] = {0.8224621 * c[0] + 0.1775380 * c[1],
                            0.0331941 * c[0] + 0.9668058 * c[1],
                            0.0170827 * c[0] + 0.0723974 * c[1] + 0.9105199 * c[2]};
        if (c[3] < 1) return rgb(c);
        bool clipped = false, black = true;
        for (const double v : p) {
            clipped = clipped || v >= 0.998;
            black = black && v <= 0.0002;
        }
        if (clipped) return {1, 0.02, 0.02};
        return black ? Rgb{0, 0.25, 1} : rgb(c);
    });
}

TEST(OverlayKernels, clippingMarksWholePixels) {
    const struct {
        Rgba pixel;
        Rgb expected;
    } cases[] = {
        {{1, 1, 1, 1}, {1, 0.02, 0.02}},     {{0.2, 0.3, 1.12, 1}, {1, 0.02, 0.02}},
        {{0.25, 0.5, 1, 1}, {0.25, 0.5, 1}}, // P3 blue is 0.0043 + 0.0362 + 0.9105
        {{0, 0, 0, 1}, {0, 0.25, 1}},        {{-0.5, 0.0001, 0, 1}, {0, 0.25, 1}},
        {{0.0625, 0, 0, 1}, {0.0625, 0, 0}}, {{0, 0, 0, 0.5}, {0, 0, 0}},
        {{1, 1, 1, 0.75}, {1, 1, 1}},
    };
    for (const auto& [pixel, expected] : cases) {
        Sample s;
        s.inputs[0] = pixel;
        const Rgb marked = vectorPixel(kernel::twClipping(), s, {});
        for (int k = 0; k < 3; k++)
            EXPECT_NEAR(marked[k], expected[k], 1e-7) << pixel[0] << ' ' << pixel[2];
    }
}

// The curve, and past white 16 stands for what is left of the way to 1.064.
TEST(ReductionKernels, followTheirSteps) {
    const auto compressed = [](double x) {
        const double u = std::abs(x) / 0.18;
        if (u < 16) return curve(x);
        return std::copysign(1 + 0.064 * (1 - 16 / u), x);
    };
    compareAllForms(kernel::compressedLight(), {{}}, [&](const Sample& s, const auto&) -> Rgb {
        Rgb c = rgb(s.inputs[0]);
        for (double& v : c)
            v = std::isnan(v) ? 0 : compressed(v);
        return c;
    });
    // Back again, found by bisection.
    Comparison how;
    how.tolerance = 1e-4; // next to white the curve is nearly level
    compareAllForms(
        kernel::expandedLight(), {{}},
        [&](const Sample& s, const auto&) -> Rgb {
            Rgb c = rgb(s.inputs[0]);
            for (double& v : c) {
                double low = 0, high = 18;
                for (int step = 0; step < 60; ++step) {
                    const double middle = (low + high) / 2;
                    (compressed(middle) < std::abs(v) ? low : high) = middle;
                }
                v = std::isnan(v) ? 0 : std::copysign(high, v);
            }
            return c;
        },
        how);
}

TEST(RenderingKernel, followsItsSteps) {
    compareAllForms(kernel::rawRendering(), {{}}, rendered);
}

TEST(RenderingKernel, greysFollowACameraCurve) {
    EXPECT_NEAR(render(0.18, 0.18, 0.18)[1], 0.18, 1e-6);
    double before = -1;
    for (double stops = -14; stops < 9; stops += 0.03125) {
        const double x = 0.18 * std::exp2(stops);
        const Rgb c = render(x, x, x);
        EXPECT_NEAR(c[0], c[2], 1e-7);
        EXPECT_GE(c[1], before) << stops;
        EXPECT_LE(c[1], 1.0) << stops;
        before = c[1];
    }
    // Blacks are deeper than in the scene but not crushed; four stops of highlights have their
    // place.
    const auto stopsOf = [](double stops) {
        const double x = 0.18 * std::exp2(stops);
        return std::log2(render(x, x, x)[1] / 0.18);
    };
    EXPECT_NEAR(stopsOf(-8) + 8, -0.43, 0.03);
    const double slope = (stopsOf(0.05) - stopsOf(-0.05)) / 0.1;
    EXPECT_GT(slope, 1.1);
    EXPECT_LT(slope, 1.3);
    EXPECT_LT(render(1.44, 1.44, 1.44)[1], 0.97) << "three stops above grey";
    EXPECT_GT(render(2.88, 2.88, 2.88)[1], 0.9999) << "four stops above grey";
}

TEST(RenderingKernel, keepsThePlaceOfTheMiddleChannelAndGoesToWhite) {
    for (double gain = 0.01; gain < 300; gain *= 1.5) {
        const Rgb sky = render(0.25 * gain, 0.45 * gain, 0.9 * gain);
        if (sky[2] - sky[0] > 1e-4) {
            EXPECT_NEAR((sky[1] - sky[0]) / (sky[2] - sky[0]), (0.45 - 0.25) / (0.9 - 0.25), 2e-3);
        }
        for (const double v : sky) {
            EXPECT_GE(v, 0);
            EXPECT_LE(v, 1);
        }
    }
    EXPECT_GT(render(40, 0.1, 0.1)[1], 0.95) << "a very bright red is white";
    EXPECT_LT(render(0.8, 0.02, 0.02)[1], 0.02) << "a bright red is red";
}

TEST(RenderingKernel, isFiniteForEverything) {
    const double odd[] = {0, -1, 25, NAN, INFINITY, -INFINITY, 1e30, -1e30, 1e-40};
    for (const double r : odd)
        for (const double g : odd)
            for (const double b : odd)
                for (const double v : render(r, g, b)) {
                    EXPECT_TRUE(std::isfinite(v)) << r << ' ' << g << ' ' << b;
                    EXPECT_LE(std::abs(v), 1.0);
                }
}

} // namespace kelvaro::test
