#include "DomainSteps.h"

#include "develop/kernels/Kernels.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvaro::test {
namespace {

Rgb relit(const Sample& sample, const std::vector<double>& p) {
    const Rgb scene = scaled(toScene(rgb(sample.inputs[0])), p[0]);
    Rgb lit;
    for (int k = 0; k < 3; k++)
        lit[k] = p[3 * k + 1] * scene[0] + p[3 * k + 2] * scene[1] + p[3 * k + 3] * scene[2];
    const double most = std::max(norm(scene), 20.2 / 0.98);
    return toBitmap(norm(lit) > most ? scaled(lit, most / norm(lit)) : lit);
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

TEST(DomainKernels, followTheirSteps) {
    Comparison how;
    const auto alone = [](Rgb (*steps)(const Rgb&)) {
        return [steps](const Sample& s, const auto&) { return steps(rgb(s.inputs[0])); };
    };
    compareAllForms(kernel::bitmapToScene(), {{}}, alone(toScene), how);
    compareAllForms(kernel::sceneToBitmap(), {{}}, alone(toBitmap), how);
    compareAllForms(kernel::bitmapRelit(),
                    {{1, 1.2, 0.1, 0, 0.02, 1, 0, 0.01, -0.05, 0.7},
                     {4, 0.8, 0, 0, 0, 1, 0.1, 0, 0, 1.5},
                     {0.2, 1, 0, 0, 0, 1, 0, 0, 0, 1}},
                    relit, how);
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

// White made blue becomes display white in that tint; and what was brighter stays so.
TEST(DomainKernels, relitWhiteIsNoBrighterThanWhite) {
    const std::vector<double> blue = {1, 0.5, 0, 0, 0, 1, 0, 0, 0, 2};
    Sample s;
    for (const double before : {1.0, 3.0}) {
        s.inputs[0] = {before, before, before, 1};
        const Rgb c = vectorPixel(kernel::bitmapRelit(), s, blue);
        EXPECT_NEAR(norm(c), before, 1e-5);
        EXPECT_NEAR(c[2] / c[0], 4, 1e-5);
    }
    s.inputs[0] = {0.1, 0.2, 0.1, 1}; // far below: the matrix alone
    const Rgb dark = vectorPixel(kernel::bitmapRelit(), s, blue);
    for (int k = 0; k < 3; k++)
        EXPECT_NEAR(dark[k], (Rgb{0.05, 0.2, 0.2})[k], 1e-7);
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
