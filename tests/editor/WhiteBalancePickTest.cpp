#include "editor/WhiteBalancePick.h"

#include "develop/WhiteBalance.h"
#include "platform/WhiteAdaptation.h"
#include "platform/imaging/ReferenceRenderer.h"
#include "recipe/Kelvin.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kelvaro {
namespace {

// The colour that a grey has under a light that the controls (temperature, tint) compensate.
PickSample greyUnder(WhitePoint asShot, double temperature, double tint, double light) {
    const WhitePoint neutral{kelvinFromShift(asShot.kelvin, temperature), asShot.tint + tint};
    const Matrix3 m =
        whiteAdaptationMatrix({kelvinFromShift(asShot.kelvin, 0), asShot.tint}, neutral);
    PickSample sample;
    for (std::size_t i = 0; i < 3; ++i)
        sample.rgb[i] = light * (m[i][0] + m[i][1] + m[i][2]);
    return sample;
}

TEST(WhiteBalancePick, FindsTheControlsThatMakeItNeutral) {
    for (const WhitePoint asShot :
         {WhitePoint{6500, 0}, WhitePoint{3200, 8}, WhitePoint{9000, -12}}) {
        for (const double temperature : {-120.0, -35.0, 0.0, 12.0, 60.0}) {
            for (const double tint : {-60.0, -5.0, 0.0, 25.0, 80.0}) {
                if (temperature == 0 && tint == 0) continue;
                const PickSample sample = greyUnder(asShot, temperature, tint, 0.2);
                const auto picked = pickedBalance(sample, asShot, nullptr);
                ASSERT_TRUE(picked) << temperature << ", " << tint;
                EXPECT_FALSE(picked->isLimited);
                EXPECT_NEAR(picked->temperature, temperature, 0.01)
                    << asShot.kelvin << ", " << tint;
                EXPECT_NEAR(picked->tint, tint, 0.01) << asShot.kelvin << ", " << temperature;
            }
        }
    }
}

// What the stage of the pipeline then draws is grey.
TEST(WhiteBalancePick, ThePipelineAgrees) {
    const WhitePoint asShot{4300, 5};
    Raster pixels({0, 0, 1, 1}, false);
    const double rgb[] = {0.3, 0.2, 0.11};
    for (int plane = 0; plane < 3; ++plane)
        pixels.row(plane, 0)[0] = float(rgb[plane]);
    const PickSample sample = pickSample(pixels.view(), 1);
    const auto picked = pickedBalance(sample, asShot, nullptr);
    ASSERT_TRUE(picked);
    EXPECT_LT(picked->temperature, 0); // orange as it is: towards blue
    const Image drawn =
        whiteBalanced(imageFrom(std::move(pixels)), asShot, picked->temperature, picked->tint);
    const auto result = makeReferenceRenderer()->renderRaster(drawn, {0, 0, 1, 1});
    ASSERT_TRUE(result);
    for (int plane = 0; plane < 3; ++plane) {
        EXPECT_NEAR(result->row(plane, 0)[0], result->row(1, 0)[0], 1e-4);
    }
}

TEST(WhiteBalancePick, RefusesWithAWordAndLimits) {
    const auto refusal = [](PickSample sample) {
        PickRefusal why = PickRefusal::clipped;
        EXPECT_FALSE(pickedBalance(sample, {6500, 0}, &why));
        return why;
    };
    EXPECT_EQ(refusal({{0.9, 0.8, 0.7}, 0.5}), PickRefusal::clipped);
    EXPECT_EQ(refusal({{0.0001, 0.0002, 0}, 0}), PickRefusal::tooDark);
    EXPECT_EQ(refusal({{NAN, 0.2, 0.2}, 0}), PickRefusal::tooDark);
    EXPECT_EQ(refusal({{0.2, 0.2, 0.2}, 0}), PickRefusal::asShot);
    for (const PickRefusal why :
         {PickRefusal::clipped, PickRefusal::tooDark, PickRefusal::asShot}) {
        EXPECT_TRUE(text(why).ends_with('.'));
    }
    const auto red = pickedBalance({{0.5, 0.02, 0.01}, 0}, {6500, 0}, nullptr);
    ASSERT_TRUE(red);
    EXPECT_TRUE(red->isLimited);
}

TEST(WhiteBalancePick, AveragesAnArea) {
    Raster area({0, 0, 2, 2}, false);
    const float red[] = {0.1f, 0.2f, 0.3f, 1.2f};
    for (int i = 0; i < 4; ++i)
        for (int plane = 0; plane < 3; ++plane)
            area.row(plane, i / 2)[i % 2] = plane == 0 ? red[i] : 0.5f;
    const PickSample sample = pickSample(area.view(), 1);
    EXPECT_NEAR(sample.rgb[0], 0.45, 1e-6);
    EXPECT_NEAR(sample.rgb[1], 0.5, 1e-6);
    EXPECT_EQ(sample.clippedShare, 0.25);
}

} // namespace
} // namespace kelvaro
