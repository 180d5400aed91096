#include "KernelTest.h"

#include "develop/kernels/Kernels.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvaro::test {
namespace {

double norm(const Rgb& c) {
    return std::sqrt(c[0] * c[0] + c[1] * c[1] + c[2] * c[2]) * 0.57735027;
}

Rgb scaled(const Rgb& c, double f) {
    return {c[0] * f, c[1] * f, c[2] * f};
}

Rgb toScene(const Sample& s, const std::vector<double>&) {
    const double n = norm(rgb(s.inputs[0]));
    if (!(n > 0.36)) return rgb(s.inputs[0]);
    if (n <= 0.98) return scaled(rgb(s.inputs[0]), (0.36 + 0.64 * (n - 0.36) / (1 - n)) / n);
    return scaled(rgb(s.inputs[0]), 20.2 * n / 0.98 / n);
}

Rgb toBitmap(const Sample& s, const std::vector<double>&) {
    const double x = norm(rgb(s.inputs[0]));
    if (!(x > 0.36)) return rgb(s.inputs[0]);
    const double u = x - 0.36;
    return scaled(rgb(s.inputs[0]),
                  (x <= 20.2 ? 0.36 + 0.64 * u / (u + 0.64) : 0.98 * x / 20.2) / x);
}

Rgb balancedToBitmap(const Sample& sample, const std::vector<double>& none) {
    const Rgb s = rgb(sample.inputs[0]);
    const double x = norm(s), before = norm(rgb(sample.inputs[1]));
    const double most = before > 20.2 / 0.98 ? before : 20.2 / 0.98; // NaN counts as little
    Sample held = sample;
    for (int k = 0; k < 3; k++)
        held.inputs[0][k] = x > most ? s[k] * most / x : s[k];
    return toBitmap(held, none);
}

Rgb withReferenceColour(const Sample& sample, const std::vector<double>&) {
    const Rgb s = rgb(sample.inputs[0]), reference = rgb(sample.inputs[1]);
    const double before = luminance(reference), after = luminance(s);
    if (!(before > 0.00001 && before < 0.18 && after > before)) return s;
    const double lift = boundedLog2(after) - boundedLog2(before);
    const double weight = smoothstep(0, 0.5, lift) * (1 - smoothstep(0.09, 0.18, before)) *
                          smoothstep(0.00001, 0.0001, before);
    Rgb out;
    for (int k = 0; k < 3; k++)
        out[k] = s[k] + (reference[k] / before * after - s[k]) * weight;
    return out;
}

} // namespace

// An infinite norm times 0 is NaN in one order of the steps and not in another: finite values only.
TEST(DomainKernels, followTheirSteps) {
    Comparison how;
    how.infinities = false;
    compareAllForms(kernel::bitmapToScene(), {{}}, toScene, how);
    compareAllForms(kernel::sceneToBitmap(), {{}}, toBitmap, how);
    compareAllForms(kernel::balancedToBitmap(), {{}}, balancedToBitmap, how);
    how.exceptions = 0.0005; // references whose luminance is what is left of larger terms
    compareAllForms(kernel::rawColour(), {{}}, withReferenceColour, how);
    how.exceptions = 0;
    how.high = 0.3; // references that are dark enough to matter
    how.low = -0.01;
    compareAllForms(kernel::rawColour(), {{}}, withReferenceColour, how);
}

TEST(DomainKernels, knownValues) {
    Sample s;
    s.inputs[0] = {0.98, 0.98, 0.98, 1};
    EXPECT_NEAR(vectorPixel(kernel::bitmapToScene(), s, {})[1], 20.2, 1e-3);
    s.inputs[0] = {0.68, 0.68, 0.68, 1}; // 0.36 + 0.64 × 0.32 / 0.32
    EXPECT_NEAR(vectorPixel(kernel::bitmapToScene(), s, {})[1], 1.0, 1e-5);
    s.inputs[0] = {0.36, 0.3, -0.1, 1};
    const Rgb same = vectorPixel(kernel::bitmapToScene(), s, {});
    for (int k = 0; k < 3; k++)
        EXPECT_EQ(same[k], static_cast<float>(s.inputs[0][k]));
}

// Scene light of white, made blue: display white in that tint; and what was brighter stays so.
TEST(DomainKernels, balancedWhiteIsNoBrighterThanWhite) {
    Sample s;
    const double white = 20.2 / 0.98;
    for (const double before : {1.0, 3.0}) {
        s.inputs[0] = {0.5 * white * before, white * before, 2 * white * before, 1};
        s.inputs[1] = {white * before, white * before, white * before, 1};
        const Rgb c = vectorPixel(kernel::balancedToBitmap(), s, {});
        EXPECT_NEAR(norm(c), before, 1e-5);
        EXPECT_NEAR(c[2] / c[0], 4, 1e-5);
    }
    s.inputs[0] = {0.1, 0.2, 0.4, 1}; // far below: sceneToBitmap
    EXPECT_EQ(vectorPixel(kernel::balancedToBitmap(), s, {}),
              vectorPixel(kernel::sceneToBitmap(), s, {}));
}

TEST(DomainKernels, sceneToBitmapIsTheInverse) {
    for (double n = 0.01; n < 0.98; n += 0.01) {
        Sample s;
        s.inputs[0] = {n, n * 0.5, n * 0.1, 1};
        const double scale = n / norm(rgb(s.inputs[0]));
        for (int k = 0; k < 3; k++)
            s.inputs[0][k] *= scale;
        Sample scene;
        const Rgb there = vectorPixel(kernel::bitmapToScene(), s, {});
        for (int k = 0; k < 3; k++)
            scene.inputs[0][k] = there[k];
        const Rgb back = vectorPixel(kernel::sceneToBitmap(), scene, {});
        for (int k = 0; k < 3; k++)
            EXPECT_NEAR(back[k], s.inputs[0][k], 3e-6) << n;
    }
}

TEST(DomainKernels, aReferenceThatIsNotANumberChangesNothing) {
    Sample s;
    s.inputs[0] = {0.5, 0.25, 0.125, 1};
    s.inputs[1] = {NAN, NAN, NAN, 1};
    EXPECT_EQ(vectorPixel(kernel::rawColour(), s, {}), (Rgb{0.5, 0.25, 0.125}));
    s.inputs[1] = {0.02, 0.02, 0.02, 1}; // lifted by more than half a stop, dark: all grey
    const double light = luminance({0.5, 0.25, 0.125});
    for (const double v : vectorPixel(kernel::rawColour(), s, {}))
        EXPECT_NEAR(v, light, 1e-6);
}

} // namespace kelvaro::test
