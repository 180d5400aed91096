// The single-precision functions of the dialect over their ranges, one float at a time; the vectors
// share their text and are compared with it where kernels are tested.
#include "platform/dialect/Plain.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <numbers>

namespace kelvaro::dialect {
namespace {

using scalar::Float;

float next(float x, int steps) {
    const auto bits = std::bit_cast<std::int32_t>(x);
    return std::bit_cast<float>(bits + (x < 0 ? -steps : steps));
}

// Units in the last place of the true value.
double ulps(float actual, double expected) {
    const float rounded = std::abs(static_cast<float>(expected));
    return std::abs(actual - expected) / (static_cast<double>(next(rounded, 1)) - rounded);
}

// The largest error over the positive floats from `low` to `high`, every `steps`-th of them.
double worst(float low, float high, int steps, const std::function<double(float)>& error) {
    double largest = 0;
    for (float x = low; x < high; x = next(x, steps))
        largest = std::max(largest, error(x));
    return largest;
}

float eval(Float (*f)(Float), float x) {
    return f(scalar::number(x)).v;
}

} // namespace

TEST(Approximations, stateTheirErrors) {
    EXPECT_LT(worst(0x1p-126f, 3e38f, 521,
                    [](float x) {
                        const double expected = std::log2(static_cast<double>(x));
                        const double error = eval(scalar::log2, x) - expected;
                        return std::abs(error) /
                               std::max(3 * std::abs(expected) * 0x1p-23, 0x1p-24);
                    }),
              1);
    for (const float sign : {1.0f, -1.0f}) {
        EXPECT_LT(worst(1e-8f, sign > 0 ? 127.5f : 126.0f, 97,
                        [sign](float x) {
                            return ulps(eval(scalar::exp2, sign * x),
                                        std::exp2(static_cast<double>(sign * x)));
                        }),
                  2);
        EXPECT_LT(worst(0x1p-126f, 3e38f, 521,
                        [sign](float x) {
                            return ulps(eval(scalar::cbrt, sign * x),
                                        std::cbrt(static_cast<double>(sign * x)));
                        }),
                  2);
        EXPECT_LT(worst(1e-6f, 40, 97,
                        [sign](float x) {
                            return std::abs(eval(scalar::tanh, sign * x) -
                                            std::tanh(static_cast<double>(sign * x)));
                        }),
                  2e-7);
        EXPECT_LT(worst(1e-6f, 80, 97,
                        [sign](float x) {
                            const double expected = std::exp(static_cast<double>(sign * x));
                            return std::abs(eval(scalar::exp, sign * x) / expected - 1) / (1 + x);
                        }),
                  2e-7);
    }
    for (const double p : {1 / 2.2, 2.2, 0.35})
        EXPECT_LT(worst(1e-12f, 30, 97,
                        [p](float x) {
                            const double expected = std::pow(static_cast<double>(x), p);
                            const double size = 1 + std::abs(p * std::log2(static_cast<double>(x)));
                            return std::abs(scalar::pow(scalar::number(x), p).v / expected - 1) /
                                   size;
                        }),
                  2e-7);
}

TEST(Approximations, anglesOfEveryQuadrant) {
    double largest = 0;
    for (double angle = -std::numbers::pi; angle <= std::numbers::pi; angle += 1e-5)
        for (const double radius : {1e-6, 0.3, 1000.0}) {
            const Float y = radius * std::sin(angle), x = radius * std::cos(angle);
            const double expected = std::atan2(static_cast<double>(y.v), static_cast<double>(x.v));
            largest = std::max(largest, std::abs(scalar::atan2(y, x).v - expected));
        }
    EXPECT_LT(largest, 7e-7);
    EXPECT_EQ(scalar::atan2(0.0, 0.0).v, 0);
}

TEST(Approximations, atTheEdgesOfTheirRange) {
    const float infinity = std::numeric_limits<float>::infinity();
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(eval(scalar::log2, 1), 0);
    EXPECT_EQ(eval(scalar::log2, infinity), 128);
    for (const float x : {nan, 0.0f, -1.0f, -infinity, 1e-40f})
        EXPECT_EQ(eval(scalar::log2, x), -126);
    EXPECT_EQ(eval(scalar::exp2, 0), 1);
    for (const float whole : {-126.0f, -3.0f, 1.0f, 24.0f, 127.0f})
        EXPECT_EQ(eval(scalar::exp2, whole), std::exp2(whole));
    EXPECT_EQ(eval(scalar::exp2, 129), infinity);
    EXPECT_EQ(eval(scalar::exp2, infinity), infinity);
    EXPECT_EQ(eval(scalar::exp2, -200), 0);
    EXPECT_EQ(eval(scalar::exp2, -infinity), 0);
    EXPECT_TRUE(std::isnan(eval(scalar::exp2, nan)));
    EXPECT_EQ(eval(scalar::cbrt, 0), 0);
    EXPECT_EQ(eval(scalar::cbrt, -infinity), -infinity);
    EXPECT_TRUE(std::isnan(eval(scalar::cbrt, nan)));
    EXPECT_LT(std::abs(eval(scalar::cbrt, 1e-41f)), 1e-12);
    EXPECT_EQ(eval(scalar::tanh, 0), 0);
    EXPECT_EQ(eval(scalar::tanh, 90), 1);
    EXPECT_EQ(eval(scalar::tanh, -90), -1);
}

TEST(Approximations, smallerLargerAndClampedWithoutANumber) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(scalar::min(1.0, nan).v, 1);
    EXPECT_EQ(scalar::max(1.0, nan).v, 1);
    EXPECT_TRUE(std::isnan(scalar::min(nan, 1.0).v));
    EXPECT_TRUE(std::isnan(scalar::max(nan, 1.0).v));
    EXPECT_EQ(scalar::clamp(nan, -2.0, 3.0).v, -2);
    EXPECT_EQ(scalar::smoothstep(0.0, 1.0, nan).v, 0);
}

TEST(Uniforms, functionsOfParameters) {
    for (double x = -300; x < 300; x += 0.37)
        EXPECT_NEAR(exp2(Uniform(x)).value / std::exp2(x), 1, 1e-15) << x;
    for (double x = -12; x < 12; x += 0.01)
        EXPECT_NEAR(tanh(Uniform(x)).value, std::tanh(x), 1e-15);
    for (double x = -std::numbers::pi; x <= std::numbers::pi; x += 0.01) {
        EXPECT_NEAR(cos(Uniform(x)).value, std::cos(x), 1e-14);
        EXPECT_NEAR(sin(Uniform(x)).value, std::sin(x), 1e-14);
    }
}

// A text cannot branch on a pixel: only what is the same for the whole image becomes a bool.
template<class Condition>
concept canBranch = requires(Condition c) {
    static_cast<bool>(c);
};
static_assert(!canBranch<scalar::Mask>);
static_assert(!canBranch<reference::Mask>);
static_assert(!std::is_convertible_v<scalar::Float, Uniform>);
static_assert(std::is_same_v<decltype(Uniform(1) < 2.0), bool>);

} // namespace kelvaro::dialect
