#include "platform/raw/FalseColour.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace kelvaro {
namespace {

constexpr int kRoom = 64; // at a row's end

// Three rows of luminance and of both differences.
struct Rows {
    std::vector<float> light[3], colour[2][3];
    explicit Rows(int count) {
        for (int r = 0; r < 3; ++r) {
            light[r].resize(std::size_t(count + kRoom));
            for (auto& difference : colour)
                difference[r].resize(std::size_t(count + kRoom));
        }
    }
    static ThreeRows of(const std::vector<float> (&v)[3]) {
        return {v[0].data(), v[1].data(), v[2].data()};
    }
    std::vector<float> run(int which, int count) const {
        std::vector<float> u(std::size_t(count + kRoom)), v = u;
        removeFalseColour(of(light), {of(colour[0]), of(colour[1])}, {u.data(), v.data()}, count);
        return which == 0 ? u : v;
    }
};

TEST(FalseColour, TheMedianCountsByHowHardTheEdgeIs) {
    std::mt19937 random(4);
    std::uniform_real_distribution<float> any(-0.5f, 0.5f);
    for (const int count : {1, 2, 3, 7, 8, 9, 31, 100}) {
        Rows rows(count);
        for (int r = 0; r < 3; ++r) {
            for (std::size_t x = 0; x < std::size_t(count); ++x) {
                rows.light[r][x] = any(random) * 0.15f;
                for (auto& difference : rows.colour)
                    difference[r][x] = any(random);
            }
        }
        for (int c = 0; c < 2; ++c) {
            const auto got = rows.run(c, count);
            const auto& in = rows.colour[c];
            EXPECT_EQ(got[0], in[1][0]);
            EXPECT_EQ(got[std::size_t(count - 1)], in[1][std::size_t(count - 1)]);
            for (std::size_t x = 1; x + 1 < std::size_t(count); ++x) {
                std::vector<float> nine;
                for (const auto& row : in)
                    nine.insert(nine.end(), row.begin() + std::ptrdiff_t(x) - 1,
                                row.begin() + std::ptrdiff_t(x) + 2);
                std::sort(nine.begin(), nine.end());
                const auto [least, most] =
                    std::minmax({rows.light[0][x], rows.light[1][x - 1], rows.light[1][x],
                                 rows.light[1][x + 1], rows.light[2][x]});
                const double part = std::clamp((double(most) - least) / 0.05 - 1, 0.0, 1.0);
                EXPECT_NEAR(got[x], in[1][x] + part * (double(nine[4]) - in[1][x]), 1e-5)
                    << count << " " << x;
            }
        }
    }
}

TEST(FalseColour, FineColourInEvenLightStaysBitForBit) {
    constexpr int count = 50;
    Rows rows(count);
    for (int r = 0; r < 3; ++r) {
        for (std::size_t x = 0; x < std::size_t(count); ++x) {
            rows.light[r][x] = 0.4f + 0.0249f * float((x + std::size_t(r)) % 2);
            for (auto& difference : rows.colour)
                difference[r][x] = x % 3 == 0 ? 0.3f : -0.1f;
        }
    }
    const auto got = rows.run(0, count);
    EXPECT_TRUE(std::equal(got.begin(), got.begin() + count, rows.colour[0][1].begin()));
}

} // namespace
} // namespace kelvaro
