#include "platform/raw/DevelopedPhoto.h"
#include "platform/raw/SyntheticDng.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <functional>
#include <numeric>
#include <random>
#include <thread>

namespace kelvaro {
namespace {

using test::developed;
using test::SyntheticDng;

// Smooth in both directions and different in each channel, so that no exchange goes unseen.
double ramp(int row, int column, int channel) {
    const double r = row / 100.0, c = column / 100.0;
    return channel == 0 ? 0.1 + 0.5 * c : channel == 1 ? 0.15 + 0.3 * r + 0.1 * c : 0.5 - 0.4 * r;
}

struct Place {
    int row, column;
};
// Where EXIF orientation puts stored (row, column) of a width × height picture.
Place upright(int orientation, int row, int column, int width, int height) {
    switch (orientation) {
    case 2:
        return {row, width - 1 - column};
    case 3:
        return {height - 1 - row, width - 1 - column};
    case 4:
        return {height - 1 - row, column};
    case 5:
        return {column, row};
    case 6:
        return {column, height - 1 - row};
    case 7:
        return {width - 1 - column, height - 1 - row};
    case 8:
        return {width - 1 - column, row};
    default:
        return {row, column};
    }
}

// The largest error of a developed file against the scene, over the whole crop, borders included.
double worst(const SyntheticDng& dng, int reduction = 1) {
    const auto path = dng.write("worst.dng");
    RawDevelopSettings settings;
    settings.reduction = reduction;
    settings.captureOnly = true;
    const Raster raster = developed(path, settings);
    std::filesystem::remove(path);
    const int width = dng.crop[2] / reduction, height = dng.crop[3] / reduction;
    const bool swaps = dng.orientation >= 5;
    EXPECT_EQ(raster.extent(), (PixelRect{0, 0, swaps ? height : width, swaps ? width : height}));
    if (raster.extent().size() != PixelSize{swaps ? height : width, swaps ? width : height})
        return 1e9;
    double error = 0;
    for (int row = 0; row < height; ++row) {
        for (int column = 0; column < width; ++column) {
            const Place at = upright(dng.orientation, row, column, width, height);
            for (int c = 0; c < 3; ++c) {
                double expected = 0;
                const int r = dng.crop[1] + row * reduction, k = dng.crop[0] + column * reduction;
                for (int i = 0; i < reduction * reduction; ++i) {
                    expected += dng.scene(r + i / reduction, k + i % reduction, c);
                }
                expected *= std::exp2(dng.exposureStops) / (reduction * reduction);
                error = std::max(error, std::abs(raster.row(c, at.row)[at.column] - expected));
            }
        }
    }
    return error;
}

// Half a step of the stored value and what the directional weights leave on a two-way ramp; the
// mirrored border adds the ramp's own slope over two photosites.
constexpr double kTolerance = 0.004, kBorderTolerance = 0.016;

TEST(Development, EveryPhaseShiftAndOrientationShowsTheScene) {
    for (const char* pattern : {"RGGB", "BGGR", "GRBG", "GBRG"}) {
        for (int shift = 0; shift < 4; ++shift) {
            SyntheticDng dng;
            dng.scene = ramp;
            dng.pattern = pattern;
            dng.width = 71;
            dng.height = 59;
            const int top = 3 + shift / 2, left = 4 + shift % 2;
            dng.active = {top, left, top + 49, left + 57};
            dng.crop = {12 - shift % 2, 12 - shift / 2, 31, 23}; // odd sizes, away from the border
            dng.black = {200, 260, 250, 230};
            dng.orientation = 1 + 2 * shift + (pattern[0] == 'B' ? 1 : 0);
            EXPECT_LT(worst(dng), kTolerance) << pattern << " shifted by " << shift;
            EXPECT_LT(worst(dng, 2), kTolerance)
                << pattern << " at half size, shifted by " << shift;
            dng.crop = {0, 0, 57, 49};
            EXPECT_LT(worst(dng), kBorderTolerance) << pattern << " up to the border";
        }
    }
}

TEST(Development, LinearDngNeedsNoDemosaic) {
    SyntheticDng dng;
    dng.scene = ramp;
    dng.pattern = "";
    dng.crop = {5, 3, 51, 41};
    dng.orientation = 7;
    dng.exposureStops = 1.5;
    EXPECT_LT(worst(dng), 2e-4);
    EXPECT_LT(worst(dng, 2), 2e-4);
}

TEST(Development, FlatFieldsAreExactAtBothSizes) {
    for (const int reduction : {1, 2}) {
        SyntheticDng dng;
        dng.scene = [](int, int, int channel) {
            return std::array{0.25, 0.5, 0.125}[std::size_t(channel)];
        };
        dng.exposureStops = -1;
        for (int row = 0; row < 48; ++row)
            dng.rowDeltas.push_back(row % 5 * 10 - 20);
        for (int column = 0; column < 64; ++column)
            dng.columnDeltas.push_back(column % 7 * 6 - 18);
        dng.black = {300, 310, 320, 330};
        EXPECT_LT(worst(dng, reduction), 5e-5) << reduction;
    }
}

// The rendering curve, and above its white of 16 times middle grey a way to 1.064.
double rendered(double v) {
    const double u = std::abs(v) / 0.18;
    const double y =
        u < 16 ? 1.017898 * u * (u + 1.7) / (u * (u + 1.2) + 13.0685) : 1 + 0.064 * (1 - 16 / u);
    return std::copysign(y, v);
}

// In rendered light, by Lanczos with three lobes both ways.
TEST(Development, FineHalfSizeIsTheWholePictureReduced) {
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

// Stored as square roots, as some cameras do to save bits.
TEST(Development, LinearisationTablesAreApplied) {
    SyntheticDng dng;
    dng.scene = ramp;
    for (int i = 0; i < 1024; ++i)
        dng.linearisation.push_back(int(16383.0 * i * i / (1023.0 * 1023.0) + 0.5));
    dng.crop = {12, 10, 31, 23};
    // A step of the root at full scale is 32 of 16383.
    EXPECT_LT(worst(dng), kTolerance + 0.002);
}

TEST(Development, PixelsThatAreNotSquareAreStretched) {
    for (const auto& [across, down] : {std::pair{1.0, 2.0}, {2.0, 1.0}, {0.5, 1.0}}) {
        SyntheticDng dng;
        dng.scene = ramp;
        dng.scale = {across, down};
        dng.orientation = across > 1 ? 6 : 1;
        const bool isWide = across > down;
        const auto path = dng.write("aspect.dng");
        for (const int reduction : {1, 2}) {
            RawProperties properties;
            const Raster raster = developed(path, {0, true, reduction}, &properties);
            const PixelSize stored{64 * (isWide ? 2 : 1), 48 * (isWide ? 1 : 2)};
            const bool swaps = dng.orientation == 6;
            EXPECT_EQ(properties.size, (swaps ? PixelSize{stored.height, stored.width} : stored));
            ASSERT_EQ(raster.extent().size(), (PixelSize{properties.size.width / reduction,
                                                         properties.size.height / reduction}));
            for (int row = 20 / reduction; row < 70 / reduction; row += 3) {
                for (int column = 20 / reduction; column < 40 / reduction; column += 3) {
                    // Place in photosites, from the middle of the stretched pixel.
                    const double r = (row + 0.5) * reduction / (isWide ? 1 : 2) - 0.5,
                                 c = (column + 0.5) * reduction / (isWide ? 2 : 1) - 0.5;
                    if (r > 40) continue;
                    const Place at = upright(dng.orientation, row, column, stored.width / reduction,
                                             stored.height / reduction);
                    const double want[3] = {0.1 + 0.5 * c / 100,
                                            0.15 + 0.3 * r / 100 + 0.1 * c / 100,
                                            0.5 - 0.4 * r / 100};
                    for (int i = 0; i < 3; ++i) {
                        EXPECT_NEAR(raster.row(i, at.row)[at.column], want[i], 0.006)
                            << across << ' ' << row << ' ' << column;
                    }
                }
            }
        }
        std::filesystem::remove(path);
    }
}

// The large pattern at every place of its corner, at odd sizes, up to the border.
TEST(Development, SixBySixPatternsShowTheSceneAtAnyCrop) {
    for (int shift = 0; shift < 6; ++shift) {
        SyntheticDng dng;
        dng.scene = [](int row, int column, int channel) {
            return 0.5 * ramp(row, column, channel) + 0.1;
        };
        dng.pattern = "GGRGGBGGBGGRBRGRBGGGBGGRGGRGGBRBGBRG";
        dng.width = 90, dng.height = 74;
        dng.active = {3 + shift, 2 * shift, 67 + shift, 71 + 2 * shift};
        dng.crop = {shift % 3, shift % 2, 71 - shift, 64 - shift};
        for (const int reduction : {1, 2})
            EXPECT_LT(worst(dng, reduction), 0.02) << shift << ' ' << reduction;
    }
}

TEST(Development, WhiteBalanceComesFromTheNeutral) {
    SyntheticDng dng;
    const std::array<double, 3> neutral{0.4, 1, 0.7};
    dng.neutral = neutral;
    // A sensor with these sensitivities sees a grey card as multiples of its neutral.
    for (std::size_t i = 0; i < 9; ++i)
        dng.matrix[i] *= neutral[i / 3];
    dng.scene = [&](int, int, int channel) { return 0.18 * neutral[std::size_t(channel)]; };
    const auto path = dng.write("balance.dng");
    RawProperties properties;
    const Raster raster = developed(path, {}, &properties);
    std::filesystem::remove(path);
    for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(raster.row(c, 20)[30], 0.18, 5e-5);
    EXPECT_NEAR(properties.asShotTemperature, 6504, 15);
    EXPECT_EQ(properties.size, (PixelSize{64, 48}));
}

// The matrix of the camera's kind, times what this one differs by.
TEST(Development, IndividualCalibrationIsApplied) {
    SyntheticDng dng;
    dng.scene = ramp;
    dng.crop = {12, 10, 31, 23};
    dng.calibration = {1, 0.1, 0, 0, 1, 0, 0, 0.05, 1};
    const auto whole = dng.matrix;
    for (std::size_t i = 0; i < 3; ++i) {
        dng.matrix[i] = whole[i] - 0.1 * whole[3 + i];
        dng.matrix[6 + i] = whole[6 + i] - 0.05 * whole[3 + i];
    }
    EXPECT_LT(worst(dng), kTolerance);
}

// Fine texture: pixels at the edges must be as good as those inside.
TEST(Development, BordersAreAsGoodAsTheInside) {
    for (const char* pattern : {"RGGB", "GBRG", "GGRGGBGGBGGRBRGRBGGGBGGRGGRGGBRBGBRG"}) {
        SyntheticDng dng;
        dng.pattern = pattern;
        dng.width = 173, dng.height = 141;
        dng.active = {0, 0, 141, 173};
        dng.crop = {0, 0, 173, 141};
        dng.scene = [](int row, int column, int channel) {
            const double light = 0.3 + 0.12 * std::sin(0.9 * column + 0.35 * row) +
                                 0.08 * std::sin(0.5 * row - 0.2 * column);
            return light * std::array{1.0, 0.9, 0.7}[std::size_t(channel)];
        };
        const auto path = dng.write("border.dng");
        const Raster raster = developed(path, {0, true, 1});
        std::filesystem::remove(path);
        double edge = 0, edges = 0, inner = 0, inners = 0;
        for (int y = 0; y < 141; ++y) {
            for (int x = 0; x < 173; ++x) {
                const bool isEdge = std::min({x, y, 172 - x, 140 - y}) < 3;
                for (int c = 0; c < 3; ++c) {
                    const double d = raster.row(c, y)[x] - dng.scene(y, x, c);
                    (isEdge ? edge : inner) += d * d;
                    (isEdge ? edges : inners) += 1;
                }
            }
        }
        const double outside = std::sqrt(edge / edges), inside = std::sqrt(inner / inners);
        std::printf("%s: error %.5f at the border, %.5f inside\n", pattern, outside, inside);
        EXPECT_LT(outside, 2 * inside + 0.004) << pattern;
    }
}

// Noise at high sensitivity leaves no blotches of colour, and what is really coloured stays.
TEST(Development, CoarseColourNoiseIsReduced) {
    SyntheticDng dng;
    dng.width = 512, dng.height = 384;
    dng.active = {0, 0, 384, 512};
    dng.crop = {0, 0, 512, 384};
    dng.black = {1024, 1024, 1024, 1024};
    const auto isPatch = [](int row, int column) {
        return row >= 160 && row < 240 && column >= 200 && column < 300;
    };
    std::mt19937 random(4);
    std::normal_distribution<double> noise(0, 0.03);
    dng.scene = [&](int row, int column, int channel) {
        const double colour = isPatch(row, column) && channel == 0 ? 0.2 : 0.06;
        return colour + noise(random);
    };
    const auto path = dng.write("blotches.dng");
    const Raster plain = developed(path, {0, true, 1}), reduced = developed(path, {0, false, 1});
    std::filesystem::remove(path);
    constexpr int kBlock = 16;
    const auto blockMeans = [&](const Raster& raster, int row, int column) {
        double sum = 0;
        for (int y = row; y < row + kBlock; ++y) {
            for (int x = column; x < column + kBlock; ++x)
                sum += raster.row(0, y)[x] - raster.row(1, y)[x];
        }
        return sum / (kBlock * kBlock);
    };
    double before = 0, after = 0;
    for (int row = 32; row < 120; row += kBlock) {
        for (int column = 32; column < 464; column += kBlock) {
            before += std::pow(blockMeans(plain, row, column), 2);
            after += std::pow(blockMeans(reduced, row, column), 2);
        }
    }
    EXPECT_LT(std::sqrt(after), 0.4 * std::sqrt(before));
    for (int row = 176; row < 220; row += kBlock) {
        for (int column = 216; column < 280; column += kBlock)
            EXPECT_NEAR(blockMeans(reduced, row, column), 0.14, 0.03);
    }
}

TEST(Development, KeepsValuesBelowBlackAndAboveOne) {
    SyntheticDng dng;
    dng.black = {1000, 1000, 1000, 1000};
    dng.exposureStops = 2;
    dng.scene = [](int, int column, int) { return column < 32 ? -0.01 : 0.9; };
    EXPECT_LT(worst(dng), 10); // sizes agree
    const auto path = dng.write("range.dng");
    const Raster raster = developed(path);
    std::filesystem::remove(path);
    EXPECT_NEAR(raster.row(1, 24)[10], -0.04, 5e-4);
    EXPECT_NEAR(raster.row(1, 24)[54], 3.6, 5e-3);
}

TEST(Development, BlownAreasAreNeutral) {
    SyntheticDng dng;
    dng.neutral = {0.4, 1, 0.7};
    // Brighter from left to right: green saturates first, red (0.4 of it) last.
    for (std::size_t i = 0; i < 9; ++i)
        dng.matrix[i] *= dng.neutral[i / 3];
    dng.width = 200;
    dng.active = {0, 0, 48, 200};
    dng.crop = {0, 0, 200, 48};
    const auto scene = [](int column) { return 0.3 + 3.2 * column / 200; };
    dng.scene = [&](int, int column, int channel) {
        return std::min(1.0, scene(column) * std::array{0.4, 1.0, 0.7}[std::size_t(channel)]);
    };
    const auto path = dng.write("blown.dng");
    for (const int reduction : {1, 2}) {
        const Raster raster = developed(path, {0, true, reduction});
        float before = 0;
        for (int x = 0; x < 200 / reduction; ++x) {
            const float* rows[3] = {raster.row(0, 24 / reduction), raster.row(1, 24 / reduction),
                                    raster.row(2, 24 / reduction)};
            // A grey ramp stays grey, rises throughout, and follows the scene while red is sound.
            const double want = std::min(scene(x * reduction), 2.5);
            for (const float* row : rows) {
                EXPECT_NEAR(row[x], rows[1][x], 0.04 * want) << x;
                EXPECT_NEAR(row[x], want, 0.06 * want) << x;
            }
            EXPECT_GE(rows[1][x], before - 0.01f);
            before = rows[1][x];
        }
    }
    std::filesystem::remove(path);
}

TEST(Development, SaturatedGreenTakesTheColourAround) {
    // A bright yellow patch, whose green is cut off, in a yellow of half its brightness.
    SyntheticDng dng;
    dng.neutral = {0.4, 1, 0.7};
    for (std::size_t i = 0; i < 9; ++i)
        dng.matrix[i] *= dng.neutral[i / 3];
    dng.scene = [](int row, int column, int channel) {
        const bool isPatch = row >= 16 && row < 32 && column >= 24 && column < 40;
        const double light = isPatch ? 1.4 : 0.7;
        return std::min(1.0, light * std::array{0.4 * 1.2, 1.0, 0.7 * 0.2}[std::size_t(channel)]);
    };
    const auto path = dng.write("yellow.dng");
    const Raster raster = developed(path, {0, true, 1});
    std::filesystem::remove(path);
    EXPECT_NEAR(raster.row(0, 24)[32], 1.4 * 1.2, 0.05);
    EXPECT_NEAR(raster.row(1, 24)[32], 1.4, 0.15);
    EXPECT_NEAR(raster.row(2, 24)[32], 1.4 * 0.2, 0.05);
}

TEST(Development, StopsWhenCancelled) {
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

// Tiles of every shape and order, from several threads, and after the file is closed.
TEST(Development, StreamedPixelsEqualTheKeptOnes) {
    SyntheticDng dng;
    dng.width = 700, dng.height = 420;
    dng.active = {0, 0, 420, 700};
    dng.crop = {3, 5, 690, 411};
    dng.scene = [](int row, int column, int channel) {
        return 0.3 + 0.2 * std::sin(row * 0.31 + channel) * std::cos(column * 0.17);
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
                    Raster got(part, false);
                    source->read(got.view());
                    for (int c = 0; c < 3; ++c) {
                        for (int row = 0; row < part.height; ++row) {
                            const float* want =
                                kept.row(c, whole.top() - part.top() + row) + part.x;
                            wrong += !std::equal(want, want + part.width, got.row(c, row));
                        }
                    }
                }
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        EXPECT_EQ(wrong, 0) << "orientation " << orientation;
        std::filesystem::remove(path);
    }
}

// Greens that see more in one kind of row would show as a maze on even surfaces.
TEST(Development, UnequalGreensAreBroughtTogether) {
    for (const char* pattern : {"RGGB", "GRBG", "BGGR", "GBRG"}) {
        SyntheticDng dng;
        dng.width = 200, dng.height = 160;
        dng.active = {0, 0, 160, 200};
        dng.crop = {0, 0, 200, 160};
        dng.pattern = pattern;
        const bool hasRedFirst = std::string(pattern).substr(0, 2).find('R') != std::string::npos;
        dng.scene = [&](int row, int column, int channel) {
            const double even = 0.2 + 0.001 * column;
            const bool isRedRow = (row % 2 == 0) == hasRedFirst;
            return channel != 1 ? even : even * (isRedRow ? 1.03 : 0.97);
        };
        const auto path = dng.write("greens.dng");
        const Raster raster = developed(path, {0, true, 1});
        for (int y = 20; y < 140; ++y) {
            for (int x = 20; x < 180; ++x)
                ASSERT_NEAR(raster.row(1, y)[x], 0.2 + 0.001 * x, 0.0012) << pattern;
        }
        std::filesystem::remove(path);
    }
}

// What the tags claim may be nonsense: a sentence that names the file, or a picture without a
// single absurd value.
TEST(Development, NonsenseInTagsIsRefusedOrSurvived) {
    const std::pair<const char*, std::function<void(SyntheticDng&)>> cases[] = {
        {"white 0", [](SyntheticDng& d) { d.claimedWhite = 0; }},
        {"white below black", [](SyntheticDng& d) { d.claimedWhite = 100; }},
        {"matrix 0", [](SyntheticDng& d) { d.matrix.fill(0); }},
        {"matrix of one rank", [](SyntheticDng& d) { d.matrix.fill(0.3); }},
        {"neutral 0", [](SyntheticDng& d) { d.neutral.fill(0); }},
        {"one neutral 0", [](SyntheticDng& d) { d.neutral[1] = 0; }},
        {"active outside",
         [](SyntheticDng& d) {
             d.active = {0, 0, 4800, 6400};
         }},
        {"active inverted",
         [](SyntheticDng& d) {
             d.active = {40, 50, 3, 2};
         }},
        {"crop outside",
         [](SyntheticDng& d) {
             d.crop = {60, 40, 6400, 4800};
         }},
        {"active area of one photosite",
         [](SyntheticDng& d) {
             d.active = {5, 5, 6, 6};
         }},
        {"crop of nothing",
         [](SyntheticDng& d) {
             d.crop = {3, 3, 0, 0};
         }},
        {"black above white", [](SyntheticDng& d) { d.black.fill(65535); }},
        {"exposure", [](SyntheticDng& d) { d.exposureStops = 1000; }},
        {"orientation", [](SyntheticDng& d) { d.orientation = 99; }},
        {"huge",
         [](SyntheticDng& d) {
             d.claimedSize = {100'000, 100'000};
         }},
        {"wide",
         [](SyntheticDng& d) {
             d.claimedSize = {60'000, 60'000};
         }},
        {"flat",
         [](SyntheticDng& d) {
             d.claimedSize = {64, 0};
         }},
        {"longer than stored",
         [](SyntheticDng& d) {
             d.claimedSize = {64, 4800};
         }},
    };
    for (const auto& [name, spoil] : cases) {
        SyntheticDng dng;
        dng.scene = ramp;
        spoil(dng);
        const auto path = dng.write("nonsense.dng");
        CameraRawEngine engine;
        for (const bool streamed : {false, true}) {
            auto file = engine.open(path);
            if (!file) {
                EXPECT_NE(file.error().message.find("nonsense.dng"), std::string::npos) << name;
                break;
            }
            RawDevelopSettings settings;
            settings.streamed = streamed;
            auto source = (*file)->develop(settings, nullptr);
            if (!source) {
                EXPECT_NE(source.error().message.find("nonsense.dng"), std::string::npos) << name;
                continue;
            }
            const PixelRect extent = (*source)->extent();
            EXPECT_LE(std::int64_t(extent.width) * extent.height, 64 * 4800) << name;
            Raster raster(extent, false);
            (*source)->read(raster.view());
            for (int c = 0; c < 3; ++c) {
                for (int y = 0; y < extent.height; ++y) {
                    const float* row = raster.row(c, y);
                    EXPECT_TRUE(std::all_of(row, row + extent.width, [](float v) {
                        return std::isfinite(v) && std::abs(v) < 1e5f;
                    })) << name;
                }
            }
        }
        std::filesystem::remove(path);
    }
}

} // namespace
} // namespace kelvaro
