#include "platform/raw/Finishing.h"
#include "platform/raw/DevelopedPhoto.h"
#include "platform/raw/SyntheticDng.h"

#include <cmath>
#include <functional>
#include <random>

namespace kelvaro {
namespace {

constexpr int kWidth = 200, kHeight = 160;

// Three planes of linear values.
struct Planes {
    std::vector<float> values[3];
    explicit Planes(const std::function<double(int, int, int)>& scene) {
        for (int c = 0; c < 3; ++c) {
            for (int y = 0; y < kHeight; ++y) {
                for (int x = 0; x < kWidth; ++x)
                    values[c].push_back(float(scene(y, x, c)));
            }
        }
    }
    float at(int c, int y, int x) const { return values[c][std::size_t(y * kWidth + x)]; }
    NoiseModel noise() const {
        Finishing finishing;
        std::vector<Finishing::Sample> samples;
        finishing.sample({values[0].data(), values[1].data(), values[2].data()}, kWidth, kWidth,
                         kHeight, 0.016f, samples);
        return noiseModel(std::move(samples));
    }
    void finish(const FinishingSettings& settings, const NoiseModel& model) {
        Finishing finishing;
        const int border = Finishing::border(settings), inner = border * kWidth + border;
        finishing.run(
            {values[0].data(), values[1].data(), values[2].data()}, kWidth, kWidth, kHeight, model,
            settings,
            {{values[0].data() + inner, values[1].data() + inner, values[2].data() + inner},
             kWidth});
    }
    struct Statistics {
        double mean[3] = {}, colourDeviation = 0, lightDeviation = 0;
    };
    Statistics statistics(int left, int right) const {
        Statistics s;
        double n = 0, u = 0, uu = 0, l = 0, ll = 0;
        for (int y = 20; y < kHeight - 20; ++y) {
            for (int x = left; x < right; ++x, ++n) {
                for (int c = 0; c < 3; ++c)
                    s.mean[c] += at(c, y, x);
                const double difference = at(0, y, x) - at(1, y, x),
                             light = at(0, y, x) + 2 * at(1, y, x) + at(2, y, x);
                u += difference;
                uu += difference * difference;
                l += light;
                ll += light * light;
            }
        }
        for (double& m : s.mean)
            m /= n;
        s.colourDeviation = std::sqrt(uu / n - u / n * u / n);
        s.lightDeviation = std::sqrt(ll / n - l / n * l / n);
        return s;
    }
};

// Two saturated fields that meet at column 100, with independent noise in each channel.
Planes noisy(double deviation) {
    auto random = std::make_shared<std::mt19937>(9);
    auto normal = std::make_shared<std::normal_distribution<double>>(0, deviation);
    return Planes([=](int, int x, int c) {
        const double field = x < 100 ? std::array{0.5, 0.2, 0.1}[std::size_t(c)]
                                     : std::array{0.1, 0.25, 0.5}[std::size_t(c)];
        return field + (*normal)(*random);
    });
}

TEST(Finishing, ColourNoiseGoesAndColoursStay) {
    Planes planes = noisy(0.02);
    const auto before = planes.statistics(20, 80);
    const NoiseModel model = planes.noise();
    EXPECT_TRUE(model.hasColourNoise());
    planes.finish({0, true, false, 0.016f}, model);
    const auto after = planes.statistics(20, 80);
    EXPECT_LT(after.colourDeviation, 0.35 * before.colourDeviation);
    EXPECT_GT(after.lightDeviation, 0.8 * before.lightDeviation); // luminance is left alone
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(after.mean[c], before.mean[c], 0.003);
    // The border between the fields does not bleed: next to it the colour is nearly the field's
    // own.
    double red = 0;
    for (int y = 20; y < kHeight - 20; ++y)
        red += planes.at(0, y, 97);
    EXPECT_NEAR(red / (kHeight - 40), 0.5, 0.04);
}

TEST(Finishing, CleanPicturesAreNotTouched) {
    Planes planes = noisy(0.0004);
    EXPECT_FALSE(planes.noise().hasColourNoise());
    const Planes before = planes;
    planes.finish({0, true, false, 0.016f}, planes.noise());
    for (int c = 0; c < 3; ++c) {
        for (int y = 20; y < kHeight - 20; ++y) {
            for (int x = 20; x < kWidth - 20; ++x)
                EXPECT_NEAR(planes.at(c, y, x), before.at(c, y, x), 0.003);
        }
    }
}

TEST(Finishing, SharpeningRaisesDetailWithoutHalosOrNoise) {
    const auto detail = [](int y, int, int) { return 0.2 + 0.02 * std::sin(y * 2.1); };
    const auto edge = [](int, int x, int) {
        return 1 / (1 + std::exp(-(x - 100) * 1.5)) * 0.7 + 0.05;
    };
    const auto swing = [](const Planes& p) {
        float low = 9, high = -9;
        for (int y = 40; y < 120; ++y)
            low = std::min(low, p.at(1, y, 50)), high = std::max(high, p.at(1, y, 50));
        return high - low;
    };
    float last = 0;
    for (const float amount : {0.0f, 0.5f, 1.0f, 3.0f}) {
        Planes planes(detail);
        planes.finish({amount, false, false, 0.016f}, {});
        EXPECT_GT(swing(planes), last) << amount;
        last = swing(planes);
    }
    Planes planes(edge);
    planes.finish({1, false, false, 0.016f}, {});
    for (int x = 80; x < 120; ++x) {
        EXPECT_GT(planes.at(1, 60, x), 0.05 - 0.012);
        EXPECT_LT(planes.at(1, 60, x), 0.75 + 0.06);
        EXPECT_NEAR(planes.at(0, 60, x), planes.at(1, 60, x), 1e-5); // grey stays grey
    }
    // What is only noise is hardly enlarged.
    Planes grain = noisy(0.02);
    const double before = grain.statistics(20, 80).lightDeviation;
    grain.finish({1, false, false, 0.016f}, grain.noise());
    EXPECT_LT(grain.statistics(20, 80).lightDeviation, 1.35 * before);
}

TEST(Finishing, SettingsReachThePicture) {
    test::SyntheticDng dng;
    dng.width = 160;
    dng.height = 120;
    dng.active = {0, 0, 120, 160};
    dng.crop = {0, 0, 160, 120};
    // Detail in a plain surface; all over the picture it would count as noise.
    dng.scene = [](int row, int column, int) {
        return 0.3 + (column / 20 == 4 ? 0.03 : 0) * std::sin(row * 1.3);
    };
    const auto path = dng.write("sharp.dng");
    const auto swing = [&](const RawDevelopSettings& settings) {
        const Raster raster = test::developed(path, settings);
        float low = 9, high = -9;
        for (int y = 30; y < 90; ++y)
            low = std::min(low, raster.row(1, y)[90]), high = std::max(high, raster.row(1, y)[90]);
        return high - low;
    };
    const float plain = swing({0, true, 1}), off = swing({-100, false, 1}),
                standard = swing({0, false, 1});
    EXPECT_NEAR(off, plain, 1e-4);
    EXPECT_GT(standard, 1.1f * plain);
    EXPECT_GT(swing({100, false, 1}), standard);
    EXPECT_EQ(swing({100, true, 1}), plain); // capture only wins
    EXPECT_NEAR(swing({std::nan(""), false, 1}), standard, 1e-6);
    std::filesystem::remove(path);
}

} // namespace
} // namespace kelvaro
