#include "develop/Pictures.h"
#include "develop/golden/GoldenCases.h"
#include "platform/imaging/ReferenceRenderer.h"
#include "platform/imaging/TiledRenderer.h"

#include <cmath>
#include <gtest/gtest.h>
#include <sstream>

namespace kelvaro {
namespace {

std::string told(const test::Pixel& p) {
    std::ostringstream text;
    text << "(" << p[0] << ", " << p[1] << ", " << p[2] << ")";
    return text.str();
}

// The worst pixel with what it was made from, and the pictures themselves in the current folder.
void compare(const test::GoldenPicture& actual, const Raster& golden, double tolerance,
             const Raster& input) {
    ASSERT_EQ(actual.pixels.extent(), golden.extent()) << actual.name;
    Raster difference(golden.extent(), false);
    double worst = -1;
    std::string where;
    for (int y = 0; y < golden.extent().height; ++y)
        for (int x = 0; x < golden.extent().width; ++x) {
            const auto a = test::pixelAt(actual.pixels, x, y), g = test::pixelAt(golden, x, y);
            for (std::size_t k = 0; k < 3; ++k) {
                const double error =
                    std::abs(double(a[k]) - double(g[k])) / std::max(1.0, std::abs(double(g[k])));
                difference.row(int(k), golden.extent().height - 1 - y)[x] = float(error);
                if (error <= worst) continue; // NaN counts as worst
                worst = std::isnan(error) ? 1e9 : error;
                where = "pixel " + std::to_string(x) + ", " + std::to_string(y) + " is " + told(a) +
                        " instead of " + told(g);
                if (input.extent().contains({x, y, 1, 1}))
                    where += " from " + told(test::pixelAt(input, x, y));
            }
        }
    if (worst <= tolerance) return;
    const auto folder = std::filesystem::current_path() / "golden-mismatches";
    test::writeGolden(folder / (actual.name + ".actual"), actual.pixels);
    test::writeGolden(folder / (actual.name + ".difference"), difference);
    ADD_FAILURE() << actual.name << ": " << where << ", off by " << worst
                  << ". Actual and difference are in " << folder
                  << "; approve_golden stores what is right.";
}

// Double precision through the library's functions: what is left are their last digits.
TEST(GoldenPictures, AreWhatWasApproved) {
    const auto renderer = makeReferenceRenderer();
    for (const test::GoldenPicture& picture : test::drawnGoldenPictures(*renderer)) {
        const auto golden = test::readGolden(test::goldenPath(picture.name));
        ASSERT_TRUE(golden) << picture.name << " is missing; approve_golden stores it.";
        compare(picture, *golden, 1e-5, test::drawn(*renderer, picture.input));
    }
}

// As between the two renderers everywhere, the gamut stages' own tolerance.
TEST(GoldenPictures, AreDrawnByTheFastRendererToo) {
    const auto plain = makeReferenceRenderer(), fast = makeTiledRenderer(2);
    for (const test::GoldenPicture& picture : test::drawnGoldenPictures(*fast)) {
        const auto golden = test::readGolden(test::goldenPath(picture.name));
        ASSERT_TRUE(golden) << picture.name;
        compare(picture, *golden, 5e-4, test::drawn(*plain, picture.input));
    }
}

} // namespace
} // namespace kelvaro
