#include "develop/WhiteBalance.h"

#include "develop/Pictures.h"
#include "platform/imaging/ReferenceRenderer.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kelvaro {
namespace {

class WhiteBalance : public testing::Test {
protected:
    test::Pixel balanced(WhitePoint asShot, double temperature, double tint) {
        return test::pixelAt(
            test::drawn(*renderer_, whiteBalanced(grey_, asShot, temperature, tint)), 0, 0);
    }

    std::unique_ptr<Renderer> renderer_ = makeReferenceRenderer();
    Image grey_ = test::imageOf({1, 1}, [](int, int) { return test::Pixel{0.5f, 0.5f, 0.5f, 1}; });
};

TEST_F(WhiteBalance, IsAbsentAtZeroAndContinuousThere) {
    for (const double kelvin : {1500.0, 2000.0, 5200.0, 60000.0, 0.0, std::nan("")})
        for (const double tint : {-30.0, 0.0, std::nan("")}) {
            const WhitePoint asShot{kelvin, tint};
            EXPECT_EQ(whiteBalanced(grey_, asShot, 0, 0), grey_);
            const auto near = balanced(asShot, 0.001, 0.001);
            for (std::size_t i = 0; i < 3; ++i)
                EXPECT_NEAR(near[i], 0.5, 1e-4) << kelvin;
        }
}

TEST_F(WhiteBalance, PositiveIsWarmerAndTowardsMagenta) {
    for (const double kelvin : {2800.0, 5200.0, 9000.0}) {
        const WhitePoint asShot{kelvin, 12};
        const auto warm = balanced(asShot, 60, 0), cool = balanced(asShot, -60, 0);
        EXPECT_GT(warm[0], warm[2] * 1.1f) << kelvin;
        EXPECT_LT(cool[0] * 1.1f, cool[2]) << kelvin;
        const auto magenta = balanced(asShot, 0, 60), green = balanced(asShot, 0, -60);
        EXPECT_LT(magenta[1], std::min(magenta[0], magenta[2]) * 0.99f) << kelvin;
        EXPECT_GT(green[1], std::max(green[0], green[2]) * 1.01f) << kelvin;
    }
}

// Warm light with a strong green cast lies near the edge of what eyes see; grey must stay a colour.
TEST_F(WhiteBalance, StaysDefinedAtItsEnds) {
    for (const double kelvin : {2000.0, 2800.0, 6500.0, 50000.0})
        for (const double asShotTint : {-150.0, 0.0, 150.0})
            for (const double temperature : {-150.0, 0.0, 150.0})
                for (const double tint : {-100.0, 100.0}) {
                    const auto grey = balanced({kelvin, asShotTint}, temperature, tint);
                    const double luminance = 0.2126 * double(grey[0]) + 0.7152 * double(grey[1]) +
                                             0.0722 * double(grey[2]);
                    EXPECT_NEAR(luminance, 0.5, 1e-5);
                    const auto plain = balanced({kelvin, asShotTint}, temperature, 0);
                    EXPECT_EQ(grey[1]<plain[1], tint> 0) << kelvin << " " << asShotTint;
                }
}

// 5000 K is 200 mired; 75 less is 125 mired, 8000 K.
TEST_F(WhiteBalance, ShiftsByMired) {
    const auto shifted = balanced({5000, 0}, 75, 10);
    const auto direct = test::pixelAt(
        test::drawn(*renderer_, temperatureAndTint(grey_, {8000, 10}, {5000, 0})), 0, 0);
    for (std::size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(shifted[i], direct[i], 1e-6);
}

} // namespace
} // namespace kelvaro
