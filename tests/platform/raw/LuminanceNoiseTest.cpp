#include "platform/raw/LuminanceNoise.h"
#include "platform/raw/Development.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>

namespace kelvaro {
namespace {

constexpr double kToe = 0.016;

double encoded(double v) {
    return v / std::sqrt(v + kToe);
}

// Of one photosite at an encoded luminance, by the counts of electrons: 50,000 at ISO 100, 3 read.
double photositeNoise(float at, double sensitivity, double gain) {
    double v = 0; // where `encoded` is that luminance
    for (double step = 4; step > 1e-9; step /= 2) {
        if (encoded(v + step) < double(at)) v += step;
    }
    const double electrons = 5e6 / sensitivity, count = v / gain * electrons;
    const double deviation = std::sqrt(count + 9) / electrons * gain;
    return deviation * (encoded(v + 1e-5) - encoded(v)) / 1e-5;
}

TEST(LuminanceNoise, IsBelievedAsFarAsTheSensitivityAllows) {
    NoiseLine texture{0.2f, 0.5f, 0.08f, 0.09f};
    for (const double none :
         {0.0, 100.0, 400.0, 799.0, -1600.0, std::nan(""), std::numeric_limits<double>::infinity()})
        EXPECT_EQ(grainModel(texture, none, kToe, 1).share, 0) << none;
    for (const double gain : {1.0, 2.0}) {
        const GrainModel model = grainModel(texture, 6400, kToe, gain);
        EXPECT_NEAR(model.noise.dark, 1.2 * 0.84 * photositeNoise(0.2f, 6400, gain), 2e-4);
        EXPECT_NEAR(model.noise.light, 1.2 * 0.84 * photositeNoise(0.5f, 6400, gain), 2e-4);
        EXPECT_FLOAT_EQ(model.share, 0.6f);
    }
    // A clean picture at high sensitivity has little to lose, and loses nothing.
    const NoiseLine clean{0.2f, 0.5f, 0.003f, 0.004f};
    EXPECT_EQ(grainModel(clean, 6400, kToe, 1).noise.light, 0.004f);
    EXPECT_EQ(grainModel(clean, 6400, kToe, 1).share, 0);
    // Halfway between what is not seen and what is sandy.
    EXPECT_NEAR(grainModel({0.2f, 0.5f, 0.00825f, 0.00825f}, 6400, kToe, 1).share, 0.3, 1e-4);
}

// Encoded luminance through the step as a finishing without sharpening runs it.
struct Plane {
    static constexpr int width = 200, height = 150;
    std::vector<float> in, out;
    explicit Plane(const std::function<double(int, int)>& scene) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x)
                in.push_back(float(scene(y, x)));
        }
        out = in;
    }
    void run(const GrainModel& grain) {
        constexpr int stride = 288, rows = 16;
        std::vector<float> y(stride * rows), sharpened(stride * rows);
        const RowRing from{y.data(), rows, width, height, stride};
        const RowRing to{sharpened.data(), rows, width, height, stride};
        LuminanceNoise noise;
        noise.resize(width, stride);
        for (int t = 0; t < height; ++t) {
            std::copy_n(in.data() + t * width, width, from.row(t));
            std::copy_n(in.data() + t * width, width, to.row(t));
            noise.addRow(grain, from, to, t);
            const int done = t - LuminanceNoise::kReach;
            if (done >= 0) std::copy_n(to.row(done), width, out.data() + done * width);
        }
    }
    // Of the difference from a scene, within the columns.
    double deviation(const std::function<double(int, int)>& scene, int left, int right) const {
        double sum = 0, count = 0;
        for (int y = 20; y < height - 20; ++y) {
            for (int x = left; x < right; ++x, ++count) {
                const double d = double(out[std::size_t(y * width + x)]) - scene(y, x);
                sum += d * d;
            }
        }
        return std::sqrt(sum / count);
    }
};

TEST(LuminanceNoise, FallsInPlainSurfacesAndTextureStays) {
    constexpr double kNoise = 0.02;
    // A plain field, and one of texture whose deviation is three times that of the noise.
    const auto texture = [](int y, int x) { return 0.12 * std::sin(x * 1.9) * std::cos(y * 1.3); };
    const auto scene = [&](int y, int x) { return 0.4 + (x < 100 ? 0.0 : texture(y, x)); };
    std::mt19937 random(7);
    std::normal_distribution<double> normal(0, kNoise);
    Plane plane([&](int y, int x) { return scene(y, x) + normal(random); });
    // White noise of 1 leaves 0.889 in the finest detail.
    const float finest = float(0.889 * kNoise);
    plane.run({{0.3f, 0.5f, finest, finest}, 0.6f});
    // What is left is 0.4 y + 0.6 s, and s, smoothed by splines of variance 1 and 4, has a peak of
    // 1 / (10 π) and squares that sum to 1 / (20 π): √(0.16 + 0.48 / (10 π) + 0.36 / (20 π)).
    EXPECT_NEAR(plane.deviation(scene, 20, 80), 0.425 * kNoise, 0.06 * kNoise);
    double seen = 0, there = 0;
    for (int y = 20; y < Plane::height - 20; ++y) {
        for (int x = 120; x < 180; ++x) {
            seen += double(plane.out[std::size_t(y * Plane::width + x)] - 0.4f) * texture(y, x);
            there += texture(y, x) * texture(y, x);
        }
    }
    EXPECT_NEAR(seen / there, 1, 0.03);
}

TEST(LuminanceNoise, LowSensitivityKeepsEveryBit) {
    constexpr int width = 160, height = 120;
    std::mt19937 random(3);
    std::normal_distribution<double> normal(4096, 320);
    std::vector<std::uint16_t> samples;
    for (int i = 0; i < width * height; ++i)
        samples.push_back(std::uint16_t(normal(random)));
    SensorImage sensor;
    sensor.width = width, sensor.height = height, sensor.stride = width;
    sensor.integers = samples.data();
    sensor.active = sensor.crop = {0, 0, width, height};
    sensor.filters.period = 2;
    sensor.filters.channels = {0, 1, 1, 2};
    sensor.black.table = {0};
    sensor.white.fill(16383);
    for (std::size_t c = 0; c < 3; ++c)
        sensor.colour.toWorking[c][c] = 1;
    const auto picture = [&](double sensitivity) {
        sensor.sensitivity = sensitivity;
        return std::move(*develop(sensor, {}, nullptr));
    };
    const Raster unknown = picture(0), low = picture(100), high = picture(12800);
    const auto steps = [](const Raster& r) {
        double sum = 0;
        for (int y = 10; y < height - 10; ++y) {
            for (int x = 10; x < width - 10; ++x)
                sum += std::abs(double(r.row(1, y)[x]) - double(r.row(1, y)[x - 1]));
        }
        return sum;
    };
    for (int c = 0; c < 3; ++c) {
        for (int y = 0; y < height; ++y)
            EXPECT_TRUE(std::equal(low.row(c, y), low.row(c, y) + width, unknown.row(c, y)));
    }
    EXPECT_LT(steps(high), 0.6 * steps(low)); // 0.4 of the finest detail, and what is coarser
}

} // namespace
} // namespace kelvaro
