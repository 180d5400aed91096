#include "develop/BrushPainting.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace kelvaro {
namespace {

int valueAt(const BrushPainter& painter, int x, int y) {
    return painter.canvas().row(y)[x];
}

BrushStroke stroke(std::vector<MaskPoint> points, double radius, double feather, double flow = 100,
                   bool erase = false) {
    return {std::move(points), radius, feather, flow, erase};
}

BrushPainter painted(PixelSize size, const std::vector<BrushStroke>& strokes) {
    BrushPainter painter(size);
    painter.goOnTo(strokes);
    return painter;
}

// The definition again, pixel by pixel: every dab over the whole canvas, walking the path in steps.
std::vector<int> plainlyPainted(PixelSize size, const std::vector<BrushStroke>& strokes) {
    std::vector<int> canvas(std::size_t(size.width) * std::size_t(size.height));
    const double longer = std::max(size.width, size.height);
    for (const BrushStroke& s : strokes) {
        const double r = std::max(s.radius * longer, 0.5), spacing = std::max(r * 0.25, 0.5);
        const double inner = r * (1 - s.feather / 100), band = std::max(r - inner, 1.0);
        const double core = std::max(r - band, 0.0);
        const auto dab = [&](double cx, double cy) {
            for (int y = 0; y < size.height; ++y)
                for (int x = 0; x < size.width; ++x) {
                    const double d = std::hypot(x + 0.5 - cx, y + 0.5 - cy);
                    if (d >= r) continue;
                    const double t = (d - (r - band)) / band;
                    const double weight = d <= core ? 1 : 1 - t * t * (3 - 2 * t);
                    const int value = int(std::lround(weight * 255 * s.flow / 100));
                    int& pixel = canvas[std::size_t(y) * std::size_t(size.width) + std::size_t(x)];
                    pixel = s.erase ? std::min(pixel, 255 - value) : std::max(pixel, value);
                }
        };
        dab(s.points[0].x * longer, s.points[0].y * longer);
        double walked = 0, next = spacing; // along the whole path
        for (std::size_t i = 1; i < s.points.size(); ++i) {
            const double ax = s.points[i - 1].x * longer, ay = s.points[i - 1].y * longer;
            const double bx = s.points[i].x * longer, by = s.points[i].y * longer;
            const double length = std::hypot(bx - ax, by - ay);
            for (; next <= walked + length; next += spacing) {
                const double t = (next - walked) / length;
                dab(ax + (bx - ax) * t, ay + (by - ay) * t);
            }
            walked += length;
        }
    }
    return canvas;
}

std::vector<BrushStroke> randomStrokes(std::mt19937& random, int count) {
    std::uniform_real_distribution<double> unit(0, 1), wide(-0.4, 1.4);
    std::vector<BrushStroke> strokes;
    for (int i = 0; i < count; ++i) {
        BrushStroke s = stroke({}, 0.2 * unit(random) * unit(random), 100 * unit(random),
                               i % 3 ? 100 : 100 * unit(random), i % 4 == 3);
        for (int points = 1 + int(5 * unit(random)); points > 0; --points)
            s.points.push_back({wide(random), wide(random)});
        strokes.push_back(s);
    }
    return strokes;
}

TEST(BrushRasterSize, FollowsTheLongerSide) {
    EXPECT_EQ(brushRasterSize({6000, 4000}), (PixelSize{2048, 1365}));
    EXPECT_EQ(brushRasterSize({100, 300}), (PixelSize{682, 2048}));
    EXPECT_EQ(brushRasterSize({1, 5000}), (PixelSize{2, 2048}));
    EXPECT_EQ(brushRasterSize({1, 1}), (PixelSize{2048, 2048}));
}

TEST(BrushPainting, OneDabByHand) {
    // Radius 8 about (32, 32), falling over 4.
    const auto painter = painted({64, 48}, {stroke({{0.5, 0.5}}, 0.125, 50)});
    EXPECT_EQ(valueAt(painter, 32, 32), 255);
    EXPECT_EQ(valueAt(painter, 34, 34), 255); // 3.54 away: inside the core
    EXPECT_EQ(valueAt(painter, 38, 32), 79);  // 6.519 away: t = 0.62980, 255 × 0.30972 = 78.98
    EXPECT_EQ(valueAt(painter, 39, 32), 10);  // 7.5166 away: t = 0.87916, 255 × 0.04028 = 10.27
    EXPECT_EQ(valueAt(painter, 40, 32), 0);
    // The smallest brush has a radius of half a pixel; its centre always gets the full value.
    const auto dot = painted({64, 48}, {stroke({{10.5 / 64, 20.5 / 64}}, 0, 0)});
    EXPECT_EQ(valueAt(dot, 10, 20), 255);
    EXPECT_EQ(valueAt(dot, 11, 20), 0);
}

TEST(BrushPainting, FlowScalesAndErasingLowers) {
    const std::vector<MaskPoint> centre{{0.5, 0.5}};
    const auto at = [&](std::vector<BrushStroke> strokes) {
        return valueAt(painted({64, 64}, strokes), 32, 32);
    };
    const auto dab = [&](double flow, bool erase) { return stroke(centre, 0.1, 0, flow, erase); };
    EXPECT_EQ(at({dab(50, false)}), 128);                 // 127.5 rounded up
    EXPECT_EQ(at({dab(50, false), dab(50, false)}), 128); // dabs never add up
    EXPECT_EQ(at({dab(50, false), dab(100, false)}), 255);
    EXPECT_EQ(at({dab(100, false), dab(40, true)}), 153); // 255 − 102
    EXPECT_EQ(at({dab(40, false), dab(40, true)}), 102);  // the smaller stays
    EXPECT_EQ(at({dab(100, true), dab(30, false)}), 77);  // 76.5: strokes act in order
    EXPECT_EQ(at({dab(0, false)}), 0);
}

TEST(BrushPainting, EqualsThePlainDefinition) {
    for (unsigned seed = 1; seed <= 12; ++seed) {
        std::mt19937 random(seed);
        const PixelSize size{40 + int(seed) * 7, 90 - int(seed) * 3};
        const auto strokes = randomStrokes(random, 6);
        const auto painter = painted(size, strokes);
        const auto expected = plainlyPainted(size, strokes);
        int worst = 0;
        for (int y = 0; y < size.height; ++y)
            for (int x = 0; x < size.width; ++x)
                worst = std::max(worst, std::abs(valueAt(painter, x, y) -
                                                 expected[std::size_t(y * size.width + x)]));
        EXPECT_EQ(worst, 0) << "seed " << seed;
    }
}

TEST(BrushPainting, GrowingEqualsPaintingAtOnceAndTellsWhatItTouched) {
    for (unsigned seed = 20; seed < 26; ++seed) {
        std::mt19937 random(seed);
        const PixelSize size{100, 70};
        const auto strokes = randomStrokes(random, 5);
        BrushPainter growing(size);
        std::vector<BrushStroke> sofar;
        for (const BrushStroke& whole : strokes)
            for (std::size_t points = 1; points <= whole.points.size(); ++points) {
                if (points == 1) sofar.push_back(whole);
                sofar.back().points.assign(whole.points.begin(),
                                           whole.points.begin() + std::ptrdiff_t(points));
                const BrushPainter before = growing;
                ASSERT_TRUE(growing.canGoOnTo(sofar));
                const PixelRect touched = growing.goOnTo(sofar);
                for (int y = 0; y < size.height; ++y)
                    for (int x = 0; x < size.width; ++x)
                        ASSERT_TRUE(valueAt(before, x, y) == valueAt(growing, x, y) ||
                                    touched.contains({x, y, 1, 1}))
                            << "seed " << seed;
            }
        const auto atOnce = painted(size, strokes);
        for (int y = 0; y < size.height; ++y)
            ASSERT_TRUE(std::equal(atOnce.canvas().row(y), atOnce.canvas().row(y) + size.width,
                                   growing.canvas().row(y)))
                << "seed " << seed;
    }
}

TEST(BrushPainting, KnowsWhenItMustStartAgain) {
    const auto base = stroke({{0.1, 0.1}, {0.5, 0.5}}, 0.1, 20);
    const auto painter = painted({64, 64}, {base, base});
    const auto with = [&](auto change) {
        std::vector<BrushStroke> strokes{base, base};
        change(strokes);
        return painter.canGoOnTo(strokes);
    };
    EXPECT_TRUE(with([](auto&) {}));
    EXPECT_TRUE(with([](auto& s) { s.back().points.push_back({0.9, 0.9}); }));
    EXPECT_TRUE(with([&](auto& s) { s.push_back(base); }));
    EXPECT_FALSE(with([](auto& s) { s.pop_back(); }));
    EXPECT_FALSE(with([](auto& s) { s.front().points.push_back({0.9, 0.9}); }));
    EXPECT_FALSE(with([](auto& s) { s.back().points.pop_back(); }));
    EXPECT_FALSE(with([](auto& s) { s.back().points[0].x = 0.2; }));
    EXPECT_FALSE(with([](auto& s) { s.back().radius = 0.2; }));
    EXPECT_FALSE(with([](auto& s) { s.back().flow = 50; }));
}

TEST(BrushPainting, DefinesTheOddCases) {
    // Coinciding points are one dab, even a thousand of them.
    const auto one = painted({64, 64}, {stroke({{0.3, 0.3}}, 0.1, 50)});
    const auto many =
        painted({64, 64}, {stroke(std::vector<MaskPoint>(1000, {0.3, 0.3}), 0.1, 50)});
    for (int y = 0; y < 64; ++y)
        ASSERT_TRUE(
            std::equal(one.canvas().row(y), one.canvas().row(y) + 64, many.canvas().row(y)));
    // A brush as large as the photo covers it, a path far outside leaves nothing, and numbers that
    // are none count as their defaults.
    const auto huge = painted({64, 64}, {stroke({{0.5, 0.5}}, 1, 0)});
    EXPECT_EQ(valueAt(huge, 0, 0), 255);
    EXPECT_EQ(valueAt(huge, 63, 63), 255);
    const auto outside = painted({64, 64}, {stroke({{-3, 4}, {5, 5}}, 0.2, 50)});
    EXPECT_EQ(valueAt(outside, 32, 63), 0);
    const double nan = std::nan("");
    const auto wild = painted({64, 64}, {stroke({}, 0.5, 0), stroke({{nan, 0}}, nan, nan, nan)});
    EXPECT_EQ(valueAt(wild, 40, 40), 0);
}

// Hostile or just very long edits must end: 1500 strokes of the largest brush all over the canvas.
TEST(BrushPainting, ThousandsOfHugeStrokesEnd) {
    std::vector<BrushStroke> strokes;
    for (int i = 0; i < 1500; ++i)
        strokes.push_back(stroke({{-4, 5}, {5, -4}, {0.1, 0.9}}, 1, i % 100));
    const auto painter = painted(brushRasterSize({6000, 4000}), strokes);
    EXPECT_EQ(valueAt(painter, 1000, 700), 255);
}

} // namespace
} // namespace kelvaro
