#include "platform/raw/BadPhotosites.h"
#include "platform/raw/DevelopedPhoto.h"
#include "platform/raw/SyntheticDng.h"

#include <bit>
#include <cmath>
#include <random>

namespace kelvaro {
namespace {

using test::developed;
using test::SyntheticDng;

// Opcode lists are big-endian.
class Bytes {
public:
    Bytes& u32(std::uint32_t v) { return put(v, 4); }
    Bytes& real(double v) { return put(std::bit_cast<std::uint64_t>(v), 8); }
    Bytes& single(float v) { return put(std::bit_cast<std::uint32_t>(v), 4); }
    std::vector<int> values;

private:
    Bytes& put(std::uint64_t v, int bytes) {
        while (bytes-- > 0)
            values.push_back(int(v >> (8 * bytes) & 255));
        return *this;
    }
};

std::vector<int> listOf(std::uint32_t id, const Bytes& content) {
    Bytes list;
    list.u32(1).u32(id).u32(0x01030000).u32(0).u32(std::uint32_t(content.values.size()));
    list.values.insert(list.values.end(), content.values.begin(), content.values.end());
    return list.values;
}

// A map of 2 × 2 gains over 64 × 48 photosites of which it takes every `pitch`th row and column.
Bytes gainMap(std::uint32_t top, std::uint32_t left, std::uint32_t pitch,
              const std::array<float, 4>& gains) {
    Bytes b;
    b.u32(top).u32(left).u32(48).u32(64).u32(0).u32(1).u32(pitch).u32(pitch).u32(2).u32(2);
    b.real(1).real(1).real(0).real(0).u32(1);
    for (const float g : gains)
        b.single(g);
    return b;
}

TEST(Opcodes, GainMapsMultiplyTheirPhotosites) {
    SyntheticDng dng;
    dng.scene = [](int, int, int) { return 0.2; };
    const std::array<float, 4> gains{1, 2, 3, 4};
    dng.opcodeList2 = listOf(9, gainMap(0, 0, 1, gains));
    auto path = dng.write("gain.dng");
    for (const int reduction : {1, 2}) {
        const Raster raster = developed(path, {0, true, reduction});
        for (const auto& [row, column] : {std::pair{10, 50}, {30, 20}, {40, 60}, {2, 2}}) {
            const double y = (row + reduction / 2.0) / 48, x = (column + reduction / 2.0) / 64;
            const double gain = (1 - y) * (1 + x) + y * (3 + x);
            for (int c = 0; c < 3; ++c) {
                EXPECT_NEAR(raster.row(c, row / reduction)[column / reduction], 0.2 * gain, 0.012)
                    << row << " " << column;
            }
        }
    }
    // Only the red ones of RGGB.
    dng.opcodeList2 = listOf(9, gainMap(0, 0, 2, {2, 2, 2, 2}));
    path = dng.write("gain.dng");
    const Raster raster = developed(path, {0, true, 2});
    EXPECT_NEAR(raster.row(0, 10)[10], 0.4, 1e-3);
    EXPECT_NEAR(raster.row(1, 10)[10], 0.2, 1e-3);
    EXPECT_NEAR(raster.row(2, 10)[10], 0.2, 1e-3);
    std::filesystem::remove(path);
}

TEST(Opcodes, RadialGainGrowsTowardsTheCorner) {
    SyntheticDng dng;
    dng.scene = [](int, int, int) { return 0.2; };
    Bytes b;
    b.real(0.5).real(0.25).real(0).real(0).real(0).real(0.5).real(0.5);
    dng.opcodeList2 = listOf(3, b);
    const auto path = dng.write("radial.dng");
    const Raster raster = developed(path, {0, true, 1});
    std::filesystem::remove(path);
    const double r2 = (std::pow(8.5 - 24, 2) + std::pow(5.5 - 32, 2)) / (24.0 * 24 + 32 * 32);
    EXPECT_NEAR(raster.row(1, 8)[5], 0.2 * (1 + 0.5 * r2 + 0.25 * r2 * r2), 0.002);
    EXPECT_NEAR(raster.row(1, 24)[32], 0.2, 0.001);
}

// What the opcodes' definitions say of a place, for a picture of 240 × 180.
struct Warp {
    std::uint32_t id;
    std::vector<std::vector<double>> planes; // coefficients
};
std::pair<double, double> definedPlace(const Warp& warp, std::size_t plane, double x, double y) {
    const auto& k = warp.planes[std::min(plane, warp.planes.size() - 1)];
    const double cx = 0.5 * 240, cy = 0.4 * 180, m = std::hypot(120, 108);
    const double dx = (x - cx) / m, dy = (y - cy) / m, r = std::hypot(dx, dy);
    double f = 0, tx = 0, ty = 0;
    if (warp.id == 1) {
        f = k[0] + k[1] * r * r + k[2] * std::pow(r, 4) + k[3] * std::pow(r, 6);
        tx = k[4] * 2 * dx * dy + k[5] * (r * r + 2 * dx * dx);
        ty = k[5] * 2 * dx * dy + k[4] * (r * r + 2 * dy * dy);
    } else {
        const double t = std::atan(r);
        f = (k[0] * t + k[1] * t * t * t + k[2] * std::pow(t, 5) + k[3] * std::pow(t, 7)) / r;
    }
    return {cx + m * (f * dx + tx), cy + m * (f * dy + ty)};
}

TEST(Opcodes, WarpsBringEachChannelFromItsPlace) {
    const auto scene = [](double y, double x, int c) {
        return 0.4 + 0.2 * std::sin(x / 23 + c) * std::cos(y / 19) + 0.0005 * x;
    };
    const Warp warps[] = {
        {1, {{0.93, 0.05, 0.01, 0.002, 0.004, -0.003}}},
        {1, {{0.951, 0.04, 0, 0, 0, 0}, {0.95, 0.04, 0, 0, 0, 0}, {0.948, 0.041, 0, 0, 0, 0}}},
        {2, {{1, -0.1, 0.02, 0.001}}},
    };
    for (const Warp& warp : warps) {
        SyntheticDng dng;
        dng.width = 260, dng.height = 190;
        dng.active = {6, 10, 186, 250};
        dng.crop = {8, 4, 221, 171};
        dng.orientation = warp.id == 2 ? 3 : 1;
        dng.scene = [&](int row, int column, int c) { return scene(row + 0.5, column + 0.5, c); };
        Bytes b;
        b.u32(std::uint32_t(warp.planes.size()));
        for (const auto& plane : warp.planes) {
            for (const double k : plane)
                b.real(k);
        }
        b.real(0.5).real(0.4);
        dng.opcodeList3 = listOf(warp.id, b);
        const auto path = dng.write("warp.dng");
        for (const int reduction : {1, 2}) {
            const Raster raster = developed(path, {0, true, reduction});
            const int width = 221 / reduction, height = 171 / reduction;
            ASSERT_EQ(raster.extent().size(), (PixelSize{width, height}));
            for (int row = 0; row < height; row += 7) {
                for (int column = 0; column < width; column += 7) {
                    const double x = 8 + (column + 0.5) * reduction,
                                 y = 4 + (row + 0.5) * reduction;
                    const bool isTurned = dng.orientation == 3;
                    for (int c = 0; c < 3; ++c) {
                        const auto [fromX, fromY] = definedPlace(warp, std::size_t(c), x, y);
                        if (fromX < 4 || fromY < 4 || fromX > 236 || fromY > 176) continue;
                        const float* got = raster.row(c, isTurned ? height - 1 - row : row);
                        EXPECT_NEAR(got[isTurned ? width - 1 - column : column],
                                    scene(fromY, fromX, c), reduction == 1 ? 0.003 : 0.006)
                            << warp.id << ": " << column << ' ' << row << ' ' << c;
                    }
                }
            }
        }
        std::filesystem::remove(path);
    }
}

TEST(Opcodes, WarpsWithoutSenseAreLeftOut) {
    SyntheticDng dng;
    dng.scene = [](int row, int column, int) { return 0.2 + 0.003 * column + 0.002 * row; };
    for (const double k : {std::nan(""), 0.0, 1e9, -40.0, 7.0}) {
        Bytes b;
        b.u32(1).real(k).real(k).real(0).real(0).real(0).real(0).real(0.5).real(0.5);
        dng.opcodeList3 = listOf(1, b);
        const auto path = dng.write("warp_nonsense.dng");
        const Raster raster = developed(path, {0, true, 1});
        EXPECT_NEAR(raster.row(1, 20)[30], 0.2 + 0.09 + 0.04, 0.002) << k;
        std::filesystem::remove(path);
    }
}

TEST(Opcodes, GainsAfterAWarpBelongToTheWarpedPicture) {
    SyntheticDng dng;
    dng.scene = [](int, int, int) { return 0.2; };
    Bytes warp, gain;
    warp.u32(1).real(0.8).real(0).real(0).real(0).real(0).real(0).real(0.5).real(0.5);
    gain.real(1).real(0).real(0).real(0).real(0).real(0.5).real(0.5);
    auto list = listOf(1, warp);
    const auto second = listOf(3, gain);
    list[3] = 2; // two opcodes
    list.insert(list.end(), second.begin() + 4, second.end());
    dng.opcodeList3 = list;
    const auto path = dng.write("late_gain.dng");
    const Raster raster = developed(path, {0, true, 1});
    const double r2 = (std::pow(8.5 - 24, 2) + std::pow(5.5 - 32, 2)) / (24.0 * 24 + 32 * 32);
    EXPECT_NEAR(raster.row(1, 8)[5], 0.2 * (1 + r2), 1e-3);
    std::filesystem::remove(path);
}

TEST(Opcodes, ListedPhotositesAreReplaced) {
    SyntheticDng dng;
    // Two neighbours of one colour, as no search for single ones finds them.
    dng.scene = [](int row, int column, int) {
        return row == 20 && (column == 30 || column == 32) ? 0.9 : 0.2;
    };
    dng.width = 90, dng.height = 60;
    dng.active = {4, 6, 52, 70};
    // The first list counts from the stored corner, the second from the active area's.
    for (const bool isFirst : {true, false}) {
        const std::uint32_t row = isFirst ? 24 : 20, column = isFirst ? 36 : 30;
        Bytes b;
        b.u32(0).u32(3).u32(0).u32(row).u32(column).u32(row).u32(column + 2).u32(0).u32(0);
        (isFirst ? dng.opcodeList1 : dng.opcodeList2) = listOf(5, b);
        (isFirst ? dng.opcodeList2 : dng.opcodeList1).clear();
        const auto path = dng.write("bad.dng");
        const Raster raster = developed(path, {0, true, 1});
        std::filesystem::remove(path);
        for (int c = 0; c < 3; ++c) {
            for (int x = 26; x < 38; ++x)
                EXPECT_NEAR(raster.row(c, 20)[x], 0.2, 1e-3) << isFirst;
        }
    }
}

TEST(Opcodes, DamagedListsAreIgnored) {
    std::mt19937 random(3);
    SyntheticDng dng;
    dng.scene = [](int, int, int) { return 0.2; };
    const auto sound = listOf(9, gainMap(0, 0, 1, {1, 1, 1, 1}));
    for (int round = 0; round < 60; ++round) {
        dng.opcodeList2 = sound;
        for (int i = 0; i < 4; ++i)
            dng.opcodeList2[random() % dng.opcodeList2.size()] = int(random() & 255);
        if (round % 3 == 0) dng.opcodeList2.resize(5 + random() % (sound.size() - 5));
        const auto path = dng.write("damaged_list.dng");
        const Raster raster = developed(path, {0, true, 2});
        ASSERT_EQ(raster.extent().width, 32) << "round " << round;
        EXPECT_TRUE(std::isfinite(raster.row(1, 10)[10]));
        std::filesystem::remove(path);
    }
}

TEST(BadPhotosites, StuckOnesGoAndPicturesStay) {
    constexpr int width = 150, height = 40;
    std::mt19937 random(11);
    std::vector<std::uint16_t> samples(std::size_t(width) * height);
    for (auto& v : samples)
        v = std::uint16_t(1000 + random() % 400);
    // A star as a lens draws it, a bright line and an edge.
    const auto at = [&](int y, int x) -> std::uint16_t& {
        return samples[std::size_t(y * width + x)];
    };
    for (int y = -1; y <= 1; ++y) {
        for (int x = -1; x <= 1; ++x)
            at(10 + y, 30 + x) = std::uint16_t(x || y ? 6000 : 14000);
    }
    for (int x = 60; x < 90; ++x)
        at(20, x) = 15000;
    for (int y = 25; y < 40; ++y) {
        for (int x = 100; x < width; ++x)
            at(y, x) = 12000;
    }
    const auto before = samples;
    const std::pair<int, int> stuck[] = {{5, 5}, {2, 2}, {37, 90}, {15, 147}, {30, 120}};
    for (const auto& [y, x] : stuck)
        at(y, x) = y == 30 ? 520 : 15871;
    SensorImage sensor;
    sensor.stride = width;
    sensor.active = {0, 0, width, height};
    sensor.filters.channels = {0, 1, 1, 2};
    EXPECT_EQ(repairStuck({samples.data(), sensor}, {512, 300, 3}), 5);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int was = before[std::size_t(y * width + x)];
            EXPECT_NEAR(at(y, x), was,
                        std::count(std::begin(stuck), std::end(stuck), std::pair{y, x}) ? 400 : 0)
                << x << ", " << y;
        }
    }
}

// Weak ones show only after a long exposure, and in every pattern.
TEST(BadPhotosites, LongExposuresAreSearchedMoreClosely) {
    for (const char* pattern : {"RGGB", "GGRGGBGGBGGRBRGRBGGGBGGRGGRGGBRBGBRG"}) {
        for (const double seconds : {0.01, 8.0}) {
            SyntheticDng dng;
            dng.pattern = pattern;
            dng.width = 120, dng.height = 96;
            dng.active = {0, 0, 96, 120};
            dng.crop = {0, 0, 120, 96};
            dng.exposureSeconds = seconds;
            dng.scene = [](int row, int column, int) {
                const bool isHot = row % 24 == 12 && column % 30 == 15;
                return 0.004 + 0.0001 * ((row * 31 + column * 17) % 5) + (isHot ? 0.014 : 0);
            };
            const auto path = dng.write("long.dng");
            const Raster raster = developed(path, {0, true, 1});
            float most = 0;
            for (int c = 0; c < 3; ++c) {
                for (int y = 0; y < 96; ++y)
                    most =
                        std::max(most, *std::max_element(raster.row(c, y), raster.row(c, y) + 120));
            }
            EXPECT_EQ(most > 0.012, seconds < 1) << pattern << ' ' << seconds << ' ' << most;
            std::filesystem::remove(path);
        }
    }
}

TEST(Opcodes, SamplesOfTheBadValueAreMended) {
    SyntheticDng dng;
    dng.scene = [](int row, int column, int) {
        return row % 11 == 5 && column % 13 == 6 ? 0.0 : 0.4;
    };
    Bytes constant;
    constant.u32(256).u32(0); // the black level is what such photosites hold
    dng.opcodeList1 = listOf(4, constant);
    const auto path = dng.write("constant.dng");
    const Raster raster = developed(path, {0, true, 1});
    for (int c = 0; c < 3; ++c) {
        for (int y = 0; y < 48; ++y) {
            for (int x = 0; x < 64; ++x)
                ASSERT_NEAR(raster.row(c, y)[x], 0.4, 1e-3) << y << ' ' << x;
        }
    }
    std::filesystem::remove(path);
}

TEST(Opcodes, GainMapsActOnSensorsWithoutMosaic) {
    SyntheticDng dng;
    dng.pattern = "";
    dng.scene = [](int, int, int) { return 0.2; };
    dng.opcodeList2 = listOf(9, gainMap(0, 0, 1, {1, 2, 3, 4}));
    const auto path = dng.write("linear_gain.dng");
    const Raster raster = developed(path, {0, true, 1});
    for (const auto& [row, column] : {std::pair{10, 50}, {30, 20}, {40, 60}}) {
        const double y = (row + 0.5) / 48, x = (column + 0.5) / 64;
        // The map is for the first of three channels alone.
        EXPECT_NEAR(raster.row(0, row)[column], 0.2 * ((1 - y) * (1 + x) + y * (3 + x)), 1e-3);
        EXPECT_NEAR(raster.row(1, row)[column], 0.2, 1e-3);
    }
    std::filesystem::remove(path);
}

} // namespace
} // namespace kelvaro
