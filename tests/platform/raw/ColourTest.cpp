#include "platform/raw/CameraColour.h"
#include "platform/raw/ColourTemperature.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kelvaro {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(ColourTemperature, KnowsTheStandardLights) {
    // CIE 15: illuminant A, daylights and the equal-energy point.
    struct Row {
        double x, y, kelvin, tolerance;
    };
    for (const Row& row : {Row{0.44757, 0.40745, 2856, 5}, Row{0.34567, 0.35850, 5003, 10},
                           Row{0.33242, 0.34743, 5503, 10}, Row{0.31272, 0.32903, 6504, 12},
                           Row{0.29902, 0.31485, 7504, 20}, Row{1.0 / 3, 1.0 / 3, 5454, 15}}) {
        EXPECT_NEAR(temperatureOf({row.x, row.y}).kelvin, row.kelvin, row.tolerance);
    }
    EXPECT_NEAR(temperatureOf({0.44757, 0.40745}).tint, 0, 0.5); // A lies on the locus
    EXPECT_GT(temperatureOf({0.33, 0.40}).tint, 20);             // greenish light
    EXPECT_LT(temperatureOf({0.33, 0.30}).tint, -20);            // magenta light
}

TEST(ColourTemperature, ConvertsThereAndBack) {
    for (double kelvin = 1800; kelvin < 40000; kelvin *= 1.13) {
        for (const double tint : {-120.0, -30.0, 0.0, 45.0, 140.0}) {
            const TemperatureTint back = temperatureOf(chromaticityOf({kelvin, tint}));
            EXPECT_NEAR(1e6 / back.kelvin, 1e6 / kelvin, 1.5) << kelvin << " K, tint " << tint;
            EXPECT_NEAR(back.tint, tint, 1.0) << kelvin << " K, tint " << tint;
        }
    }
}

// The invented sensor of the synthetic photos.
constexpr CameraFromXyz kSensor{{{0.68, -0.19, -0.062}, {-0.46, 1.27, 0.212}, {-0.09, 0.2, 0.6}}};

CameraMatrices sensor() {
    CameraMatrices camera;
    camera.first = Calibration{6504, kSensor, std::nullopt};
    return camera;
}

ChannelValues seen(const Chromaticity& white) {
    ChannelValues n{1, 1, 1, 1};
    for (std::size_t c = 0; c < 3; ++c) {
        n[c] = kSensor[c][0] * white.x / white.y + kSensor[c][1] +
               kSensor[c][2] * (1 - white.x - white.y) / white.y;
    }
    return n;
}

TEST(CameraColour, FindsTheAsShotWhiteAgain) {
    for (const TemperatureTint white :
         {TemperatureTint{2900, -12}, {4300, 20}, {5200, 10}, {9000, 0}}) {
        CameraMatrices camera = sensor();
        camera.neutral = seen(chromaticityOf(white));
        const CameraColour colour = cameraColour(camera);
        EXPECT_NEAR(colour.asShot.kelvin, white.kelvin, white.kelvin * 0.004);
        EXPECT_NEAR(colour.asShot.tint, white.tint, 1);
        for (const auto& row : colour.toWorking)
            EXPECT_NEAR(row[0] + row[1] + row[2], 1, 1e-12);
        EXPECT_DOUBLE_EQ(std::min({colour.balance[0], colour.balance[1], colour.balance[2]}), 1);
    }
}

TEST(CameraColour, MixesTwoCalibrationsByReciprocalTemperature) {
    CameraFromXyz warm = kSensor;
    for (auto& row : warm) {
        for (double& v : row)
            v *= 0.5;
    }
    warm[0][0] += 0.2;
    CameraMatrices camera;
    camera.first = Calibration{2856, warm, std::nullopt};
    camera.second = Calibration{6504, kSensor, std::nullopt};
    const Chromaticity white = chromaticityOf({4000, 0});
    const double f = (1e6 / 4000 - 1e6 / 2856) / (1e6 / 6504 - 1e6 / 2856);
    ChannelValues neutral{1, 1, 1, 1};
    const double xyz[3] = {white.x / white.y, 1, (1 - white.x - white.y) / white.y};
    for (std::size_t c = 0; c < 3; ++c) {
        neutral[c] = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            neutral[c] += ((1 - f) * warm[c][i] + f * kSensor[c][i]) * xyz[i];
        }
    }
    camera.neutral = neutral;
    EXPECT_NEAR(cameraColour(camera).asShot.kelvin, 4000, 20);
    EXPECT_NEAR(cameraColour(camera).asShot.tint, 0, 1);
}

TEST(CameraColour, BadInputStillGivesAFiniteMatrix) {
    const auto check = [](const CameraMatrices& camera, const char* what) {
        const CameraColour colour = cameraColour(camera);
        for (const auto& row : colour.toWorking) {
            double sum = 0;
            for (int c = 0; c < camera.channels; ++c)
                sum += row[std::size_t(c)];
            EXPECT_NEAR(sum, 1, 1e-9) << what;
        }
        for (const double b : colour.balance)
            EXPECT_TRUE(b >= 1 && b < 1001) << what;
        EXPECT_TRUE(colour.asShot.kelvin >= 1500 && colour.asShot.kelvin <= 100000) << what;
        EXPECT_LE(std::abs(colour.asShot.tint), 150) << what;
    };
    CameraMatrices camera;
    check(camera, "nothing known");
    camera = sensor();
    check(camera, "no white");
    for (const ChannelValues neutral : {ChannelValues{0, 0, 0, 0},
                                        {kNaN, 1, 1, 1},
                                        {-1, 1, 1, 1},
                                        {1e-9, 1, 1, 1},
                                        {1, 1, 1, 1}}) {
        camera.neutral = neutral;
        check(camera, "odd white");
    }
    camera.neutral = ChannelValues{0.4, 1, 0.6, 1};
    for (const double v : {0.0, kNaN, 1.0, 1e30}) {
        camera.first->cameraFromXyz = {};
        for (auto& row : camera.first->cameraFromXyz)
            row.fill(v);
        check(camera, "singular matrix");
    }
    camera.channels = 4;
    check(camera, "four channels without a matrix");
    camera.channels = 1;
    check(camera, "one channel");
}

} // namespace
} // namespace kelvaro
