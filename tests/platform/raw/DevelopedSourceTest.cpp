#include "platform/raw/SceneFile.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <numeric>
#include <random>
#include <thread>
#include <vector>

namespace kelvaro {
namespace {

using namespace test;

// The rendering curve, and above its white of 16 times middle grey a way to 1.064.
double rendered(double v) {
    const double u = std::abs(v) / 0.18;
    const double y =
        u < 16 ? 1.017898 * u * (u + 1.7) / (u * (u + 1.2) + 13.0685) : 1 + 0.064 * (1 - 16 / u);
    return std::copysign(y, v);
}

// In rendered light, by Lanczos with three lobes both ways.
TEST(DevelopedSource, FineHalfSizeIsTheWholePictureReduced) {
    SyntheticDng dng;
    dng.width = 400; // several tiles
    dng.height = 300;
    dng.scene = [](int row, int column, int channel) {
        return (row / 7 + column / 5) % 3 == 0 ? 0.9 : 0.05 * (channel + 1);
    };
    dng.exposureStops = 1.5;
    dng.orientation = 6;
    const auto path = dng.write("fine.dng");
    const Raster whole = developed(path);
    RawDevelopSettings settings;
    settings.reduction = 2;
    settings.fine = true;
    const Raster half = developed(path, settings);
    std::filesystem::remove(path);
    ASSERT_EQ(half.extent(),
              (PixelRect{0, 0, whole.extent().width / 2, whole.extent().height / 2}));
    constexpr double kPi = 3.14159265358979;
    const auto sinc = [=](double v) { return std::sin(kPi * v) / (kPi * v); };
    std::array<double, 12> taps{};
    for (int k = 0; k < 12; ++k) {
        const double at = std::abs(k - 5.5) / 2;
        taps[std::size_t(k)] = sinc(at) * sinc(at / 3);
    }
    const double all = std::accumulate(taps.begin(), taps.end(), 0.0);
    double error = 0;
    for (int c = 0; c < 3; ++c) {
        for (int row = 3; row + 3 < half.extent().height; ++row) {
            for (int x = 3; x + 3 < half.extent().width; ++x) {
                double sum = 0;
                for (int i = 0; i < 144; ++i) {
                    const double v = whole.row(c, 2 * row - 5 + i / 12)[2 * x - 5 + i % 12];
                    sum += taps[std::size_t(i / 12)] * taps[std::size_t(i % 12)] * rendered(v);
                }
                const double expected = std::min(sum / all / all, 1 + 0.84 * 0.064);
                error = std::max(error, std::abs(rendered(half.row(c, row)[x]) - expected));
            }
        }
    }
    EXPECT_LT(error, 1e-5);
}

// Every colour stands in the middle of its squares, whatever the pattern, the crop and the turn.
TEST(DevelopedSource, QuarterSizeIsTheMeanOfSquares) {
    RawDevelopSettings settings;
    settings.captureOnly = true;
    settings.reduction = 4;
    struct Case {
        const char* pattern;
        std::array<int, 4> crop;
        int orientation;
    };
    for (const Case& c : {Case{"RGGB", {0, 0, 96, 72}, 1}, Case{"BGGR", {4, 6, 82, 61}, 6},
                          Case{"GRBG", {3, 2, 84, 64}, 8}, Case{"GBRG", {5, 7, 80, 63}, 3},
                          Case{"RGGB", {1, 1, 91, 70}, 5}}) {
        SyntheticDng dng;
        dng.width = 96, dng.height = 72;
        dng.active = {0, 0, 72, 96};
        dng.crop = c.crop;
        dng.pattern = c.pattern;
        dng.orientation = c.orientation;
        dng.scene = ramp;
        const auto path = dng.write("quarter.dng");
        const Raster quarter = developed(path, settings);
        std::filesystem::remove(path);
        const int width = c.crop[2] / 4, height = c.crop[3] / 4;
        const bool turned = c.orientation >= 5;
        ASSERT_EQ(quarter.extent(),
                  (PixelRect{0, 0, turned ? height : width, turned ? width : height}));
        double error = 0;
        for (int channel = 0; channel < 3; ++channel)
            for (int y = 1; y + 1 < height; ++y)
                for (int x = 1; x + 1 < width; ++x) {
                    const int row = c.crop[1] + 4 * y + 1, column = c.crop[0] + 4 * x + 1;
                    const double expected =
                        (ramp(row, column, channel) + ramp(row + 1, column + 1, channel)) / 2;
                    const Place place = upright(c.orientation, y, x, width, height);
                    const double found = quarter.row(channel, place.row)[place.column];
                    error = std::max(error, std::abs(found - expected));
                }
        EXPECT_LT(error, 2e-4) << c.pattern << ", orientation " << c.orientation;
    }
    // Half the size where there is no mosaic, or more than a capture is asked for.
    SyntheticDng dng;
    dng.scene = ramp;
    const auto mosaic = dng.write("quarter.dng");
    settings.captureOnly = false;
    EXPECT_EQ(developed(mosaic, settings).extent(), (PixelRect{0, 0, 32, 24}));
    dng.pattern = "";
    const auto linear = dng.write("quarter_linear.dng");
    settings.captureOnly = true;
    EXPECT_EQ(developed(linear, settings).extent(), (PixelRect{0, 0, 32, 24}));
    std::filesystem::remove(mosaic);
    std::filesystem::remove(linear);
}

TEST(DevelopedSource, StopsWhenCancelled) {
    SyntheticDng dng;
    dng.scene = ramp;
    const auto path = dng.write("cancel.dng");
    CameraRawEngine engine;
    auto file = engine.open(path);
    ASSERT_TRUE(file);
    Cancellation cancellation;
    cancellation.cancel();
    const auto result = (*file)->develop({}, &cancellation);
    ASSERT_FALSE(result);
    EXPECT_EQ(result.error().kind, FailureKind::cancelled);
    // The file stays usable.
    EXPECT_TRUE((*file)->develop({}, nullptr));
    std::filesystem::remove(path);
}

// Whether a part of the source differs from the same of the picture.
bool differs(const PixelSource& source, const Raster& picture, const PixelRect& part) {
    Raster got(part, false);
    source.read(got.view());
    for (int c = 0; c < 3; ++c) {
        for (int row = 0; row < part.height; ++row) {
            const float* want = picture.row(c, picture.extent().top() - part.top() + row) + part.x;
            if (!std::equal(want, want + part.width, got.row(c, row))) return true;
        }
    }
    return false;
}

// Tiles of every shape and order, from several threads, and after the file is closed; then strips
// from the top on, whose tiles go on where those above them ended.
TEST(DevelopedSource, StreamedPixelsEqualTheKeptOnes) {
    SyntheticDng dng;
    dng.width = 700, dng.height = 420;
    dng.active = {0, 0, 420, 700};
    dng.crop = {3, 5, 690, 411};
    dng.scene = [](int row, int column, int channel) {
        const double noise = (row * 7919 + column * 104729 + channel * 31) % 1009 / 1009.0;
        return 0.3 + 0.2 * std::sin(row * 0.31 + channel) * std::cos(column * 0.17) + 0.05 * noise;
    };
    for (const int orientation : {1, 2, 3, 4, 5, 6, 7, 8}) {
        dng.orientation = orientation;
        const auto path = dng.write("streamed.dng");
        const Raster kept = developed(path);
        std::shared_ptr<const PixelSource> source;
        {
            CameraRawEngine engine;
            auto file = engine.open(path);
            ASSERT_TRUE(file);
            RawDevelopSettings settings;
            settings.streamed = true;
            auto streamed = (*file)->develop(settings, nullptr);
            ASSERT_TRUE(streamed);
            source = *streamed;
        }
        ASSERT_EQ(source->extent(), kept.extent());
        std::vector<std::thread> threads;
        std::atomic<int> wrong{0};
        for (int t = 0; t < 3; ++t) {
            threads.emplace_back([&, t] {
                std::mt19937 random{unsigned(t)};
                for (int i = 0; i < 12; ++i) {
                    const PixelRect whole = kept.extent();
                    const int x = int(random() % unsigned(whole.width - 9)),
                              y = int(random() % unsigned(whole.height - 9));
                    const PixelRect part = intersection(
                        whole, {x, y, 9 + int(random() % 300), 9 + int(random() % 300)});
                    wrong += differs(*source, kept, part);
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        const PixelRect whole = kept.extent();
        for (int y = whole.height; y > 0; y -= 50)
            wrong += differs(*source, kept, intersection(whole, {0, y - 50, whole.width, 50}));
        EXPECT_EQ(wrong, 0) << "orientation " << orientation;
        std::filesystem::remove(path);
    }
}

} // namespace
} // namespace kelvaro
