#include "editor/CropAspect.h"
#include "editor/CropDrag.h"
#include "editor/CropState.h"
#include "editor/Straightening.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

namespace kelvaro {
namespace {

constexpr double pi = std::numbers::pi;

void expectNear(const Box& box, const Box& expected, double tolerance = 1e-9) {
    EXPECT_NEAR(box.x, expected.x, tolerance);
    EXPECT_NEAR(box.y, expected.y, tolerance);
    EXPECT_NEAR(box.width, expected.width, tolerance);
    EXPECT_NEAR(box.height, expected.height, tolerance);
}

TEST(CropFractions, SnapClampAndKeepTwoPercent) {
    const PixelSize photo{1000, 500};
    const struct {
        Box box;
        double left, right, top, bottom;
    } cases[] = {
        {{0, 0, 1000, 500}, 0, 0, 0, 0},
        {{0.4, 0.2, 999.2, 499.6}, 0, 0, 0, 0}, // 0.0004 of each side
        {{100, 50, 600, 200}, 0.1, 0.3, 0.5, 0.1},
        {{990, 495, 10, 5}, 0.98, 0, 0, 0.98}, // 0.99
        {{-20, -10, 1040, 520}, 0, 0, 0, 0},
    };
    for (const auto& c : cases) {
        const Adjustments edit = withCropBox(Adjustments(), c.box, photo);
        EXPECT_NEAR(edit.cropLeft, c.left, 1e-12);
        EXPECT_NEAR(edit.cropRight, c.right, 1e-12);
        EXPECT_NEAR(edit.cropTop, c.top, 1e-12);
        EXPECT_NEAR(edit.cropBottom, c.bottom, 1e-12);
    }
    EXPECT_EQ(withCropBox(Adjustments(), {0.4, 0, 999.6, 500}, photo).cropLeft, 0);
    Adjustments narrow;
    narrow.cropLeft = 0.6;
    narrow.cropRight = 0.5;
    expectNear(cropBox(narrow, photo), {600, 0, 20, 500});
}

TEST(CropHandles, FirstRuleThatMatchesDecides) {
    const Box r{100, 200, 300, 100}; // x 100 … 400, y 200 … 300, y up
    const struct {
        Point at;
        CropHandle handle;
    } cases[] = {
        {{100, 300}, CropHandle::topLeft},
        {{118, 300}, CropHandle::topLeft}, // 18 points, inclusive
        {{118.1, 300}, CropHandle::top},
        {{400, 282}, CropHandle::topRight},
        {{88, 188}, CropHandle::bottomLeft},
        {{412, 212}, CropHandle::bottomRight},
        {{90, 250}, CropHandle::left}, // 10 points outside
        {{89.9, 250}, CropHandle::rotate},
        {{110, 250}, CropHandle::left},
        {{410, 250}, CropHandle::right},
        {{250, 310}, CropHandle::top},
        {{250, 190}, CropHandle::bottom},
        {{250, 189.9}, CropHandle::rotate},
        {{250, 250}, CropHandle::move},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(cropHandleAt(c.at, r), c.handle) << c.at.x << ", " << c.at.y;
    }
    EXPECT_EQ(cropHandleAt({0, 0}, std::nullopt), std::nullopt);
    // Where corners overlap the upper left one is first.
    EXPECT_EQ(cropHandleAt({5, 5}, Box{0, 0, 10, 10}), CropHandle::topLeft);
}

TEST(CropDrag, MovesAndResizesInsideThePhoto) {
    const PixelSize photo{1000, 600}; // least 30
    const Box start{200, 100, 400, 300};
    const struct {
        CropHandle handle;
        Point travel;
        std::optional<double> ratio;
        Box expected;
    } cases[] = {
        {CropHandle::move, {50, -30}, {}, {250, 70, 400, 300}},
        {CropHandle::move, {5000, -5000}, {}, {600, 0, 400, 300}},
        {CropHandle::left, {900, 0}, {}, {570, 100, 30, 300}}, // 30 before the right edge
        {CropHandle::left, {-900, 0}, {}, {0, 100, 600, 300}},
        {CropHandle::right, {-900, 50}, {}, {200, 100, 30, 300}},
        {CropHandle::top, {7, 500}, {}, {200, 100, 400, 500}},
        {CropHandle::bottom, {0, 900}, {}, {200, 370, 400, 30}},
        {CropHandle::topRight, {100, 100}, {}, {200, 100, 500, 400}},
        // Height 200 asks for width 400 about x 400; width 300 for height 150 about y 250.
        {CropHandle::top, {0, -100}, 2.0, {200, 100, 400, 200}},
        {CropHandle::right, {-100, 0}, 2.0, {200, 175, 300, 150}},
        // 500 × 300 is too wide for 1 : 1, 400 × 400 is too tall for 2 : 1; the far corner stays.
        {CropHandle::bottomLeft, {-100, 0}, 1.0, {300, 100, 300, 300}},
        {CropHandle::bottomLeft, {0, -100}, 2.0, {200, 200, 400, 200}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(int(c.handle));
        expectNear(requestedCrop(c.handle, start, c.travel, c.ratio, photo), c.expected);
    }
}

TEST(CropDrag, BisectsTowardsWhatFits) {
    // A ratio that asks for more than the photo has: from width 100 towards 1100 only half a pixel
    // past both edges fits. Centred on x 500: (1001 - 100) / 1000 of the way.
    const Box fitted =
        draggedCrop(CropHandle::top, {450, 0, 100, 50}, {0, 500}, 2.0, {1000, 600}, 0);
    expectNear(fitted, {-0.5, 0, 1001, 500.5}, 0.01);
}

TEST(CropDrag, TurnsWithTheHandAcrossTheBranchCut) {
    const struct {
        double start, from, to, degrees;
    } cases[] = {
        {0, 0, pi / 18, -10},              // counter-clockwise turns the picture so
        {5, pi / 2, pi / 2 - pi / 36, 10}, // clockwise
        {0, pi - 0.01, -pi + 0.01, -0.02 * 180 / pi},
        {0, -pi + 0.01, pi - 0.01, 0.02 * 180 / pi},
        {40, 1, 0, 45},
        {-40, 0, 1, -45},
    };
    for (const auto& c : cases) {
        EXPECT_NEAR(draggedStraighten(c.start, c.from, c.to), c.degrees, 1e-9);
    }
}

TEST(CropFit, HalfAPixelAndTurnedCorners) {
    const PixelSize photo{100, 50};
    const struct {
        Box box;
        double degrees;
        bool fits;
    } cases[] = {
        {{-0.5, -0.5, 101, 51}, 0, true},
        {{-0.6, 0, 100, 50}, 0, false},
        {{0, 0, 0, 10}, 0, false},
        {{0, 0, 100, 50}, 1, false},
        // Of a square of side s about the centre, turned by 45°, a corner lies s / √2 from the
        // middle line: at most 25.5, so s at most 36.06.
        {Box::around({50, 25}, 36, 36), 45, true},
        {Box::around({50, 25}, 36.2, 36.2), 45, false},
        // The turn is counter-clockwise: upper left and lower right leave first.
        {{5, 30, 10, 15}, 10, false},
        {{5, 5, 10, 15}, 10, true},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(fitsTurned(c.box, photo, c.degrees * pi / 180), c.fits)
            << c.box.x << ", " << c.box.y << ", " << c.degrees;
    }
}

TEST(CropFit, LargestOfARatioStaysInside) {
    expectNear(largestBox(1, {100, 300}, {1000, 600}, 0), {0, 0, 600, 600});
    expectNear(largestBox(2, {500, 580}, {1000, 600}, 0), {0, 100, 1000, 500});
}

TEST(CropAspect, TitlesRatiosAndOrientation) {
    const struct {
        Aspect aspect;
        std::string_view title;
        double landscape;
    } cases[] = {{Aspect::original, "Original", 1.5}, {Aspect::square, "Square", 1},
                 {Aspect::fourToFive, "4 : 5", 1.25}, {Aspect::fiveToSeven, "5 : 7", 1.4},
                 {Aspect::threeToTwo, "3 : 2", 1.5},  {Aspect::sixteenToNine, "16 : 9", 16 / 9.0}};
    for (const auto& c : cases) {
        EXPECT_EQ(title(c.aspect), c.title);
        EXPECT_NEAR(*aspectRatio(c.aspect, false, {600, 400}), c.landscape, 1e-12);
        EXPECT_NEAR(*aspectRatio(c.aspect, true, {600, 400}), 1 / c.landscape, 1e-12);
    }
    // An upright photo's own shape is upright, and only that one is.
    EXPECT_NEAR(*aspectRatio(Aspect::original, false, {400, 600}), 400 / 600.0, 1e-12);
    EXPECT_NEAR(*aspectRatio(Aspect::original, true, {400, 600}), 600 / 400.0, 1e-12);
    EXPECT_NEAR(*aspectRatio(Aspect::fourToFive, false, {400, 600}), 1.25, 1e-12);
    EXPECT_EQ(title(Aspect::free), "Free");
    EXPECT_EQ(aspectRatio(Aspect::free, false, {600, 400}), std::nullopt);
}

TEST(Straighten, WordsTypingAndHorizons) {
    EXPECT_EQ(straightenedNotice(3), "Straightened +3.0°");
    EXPECT_EQ(straightenedNotice(-0.04), "Straightened +0.0°");
    EXPECT_EQ(straightenFromText(" −2,5° "), -2.5);
    EXPECT_EQ(straightenFromText("+3"), 3);
    for (const char* text : {"", "°", "abc", "1e999", "nan", "1 2,3,4"}) {
        EXPECT_EQ(straightenFromText(text), std::nullopt) << text;
    }
    const struct {
        Point from, to;
        double degrees;
    } lines[] = {{{0, 0}, {100, 100 * std::tan(pi / 18)}, 10}, // rises to the right: clockwise
                 {{100, 100 * std::tan(pi / 18)}, {0, 0}, 10}, // drawn the other way
                 {{0, 0}, {-10 * std::tan(pi / 36), 10}, 5},   // an upright that leans left
                 {{0, 0}, {10, 0}, 0}};
    for (const auto& line : lines) {
        EXPECT_NEAR(*straightenFromLine(line.from, line.to), line.degrees, 1e-9);
    }
    EXPECT_EQ(straightenFromLine({3, 4}, {3, 4}), std::nullopt);
}

// How far a corner stands out of the turned photo, in pixels; negative inside.
double excess(const Box& box, PixelSize photo, double turn) {
    double most = -1e9;
    for (const double x : {box.minX(), box.maxX()}) {
        for (const double y : {box.minY(), box.maxY()}) {
            const double dx = x - photo.width / 2.0, dy = y - photo.height / 2.0;
            const double u = std::cos(turn) * dx + std::sin(turn) * dy;
            const double v = std::cos(turn) * dy - std::sin(turn) * dx;
            most =
                std::max({most, std::abs(u) - photo.width / 2.0, std::abs(v) - photo.height / 2.0});
        }
    }
    return most;
}

rc::Gen<double> between(int low, int high) {
    return rc::gen::map(rc::gen::inRange(low * 1000, high * 1000),
                        [](int thousandths) { return thousandths / 1000.0; });
}

// Whatever the hand does, the stored crop lies inside the turned photo: within half a pixel, and
// what storing fractions below 0.0005 as 0 adds.
RC_GTEST_PROP(CropProperty, StaysInsideTheTurnedPhoto, ()) {
    const PixelSize photo{*rc::gen::inRange(100, 8000), *rc::gen::inRange(100, 8000)};
    const double slack =
        0.5 + 2 * fractionSnap * std::max(photo.width, photo.height) * std::sqrt(2.0) + 1e-6;
    Adjustments edit;
    for (int step = 0; step < 8; ++step) {
        const Box crop = cropBox(edit, photo);
        if (*rc::gen::inRange(0, 3) == 0) {
            edit = straightenedTo(edit, *between(-45, 46), photo);
        } else {
            const auto handle = static_cast<CropHandle>(*rc::gen::inRange(0, 9));
            const double ratio = *between(0, 3) + 0.3;
            const bool held = *rc::gen::arbitrary<bool>();
            const Point travel{*between(-2, 2) * photo.width, *between(-2, 2) * photo.height};
            const Box next =
                draggedCrop(handle, crop, travel, held ? std::optional(ratio) : std::nullopt, photo,
                            turnOf(edit));
            edit = withCropBox(edit, next, photo);
        }
        const Box stored = cropBox(edit, photo);
        RC_ASSERT(excess(stored, photo, turnOf(edit)) <= slack);
        RC_ASSERT(stored.width > 0 && stored.height > 0);
    }
}

RC_GTEST_PROP(CropProperty, NamedRatiosAreKeptWhileDragging, ()) {
    const PixelSize photo{6000, 4000};
    const double ratio = *aspectRatio(allAspects[*rc::gen::inRange<std::size_t>(1, 7)],
                                      *rc::gen::arbitrary<bool>(), photo);
    const double turn = *between(-45, 46) * pi / 180;
    const Box start = largestBox(ratio, {3000, 2000}, photo, turn);
    const auto handle = static_cast<CropHandle>(*rc::gen::inRange(0, 9));
    const Box next = draggedCrop(handle, start, {*between(-2000, 2000), *between(-2000, 2000)},
                                 ratio, photo, turn);
    RC_ASSERT(std::abs(next.width / next.height / ratio - 1) < 1e-6);
    const Box shrunk = shrunkToFit(next, photo, turn + 0.3);
    RC_ASSERT(fitsTurned(shrunk, photo, turn + 0.3));
    RC_ASSERT(std::abs(shrunk.width / shrunk.height / ratio - 1) < 1e-6);
}

RC_GTEST_PROP(CropProperty, FractionsAndBoxesAgree, ()) {
    const PixelSize photo{*rc::gen::inRange(50, 9000), *rc::gen::inRange(50, 9000)};
    const double left = *between(0, 1) * 0.9, bottom = *between(0, 1) * 0.9;
    const double width = 0.03 + *between(0, 1) * (0.97 - left);
    const double height = 0.03 + *between(0, 1) * (0.97 - bottom);
    const Box box{left * photo.width, bottom * photo.height, width * photo.width,
                  height * photo.height};
    const Box back = cropBox(withCropBox(Adjustments(), box, photo), photo);
    const double tolerance = fractionSnap * std::max(photo.width, photo.height) + 1e-6;
    RC_ASSERT(std::abs(back.minX() - box.minX()) <= tolerance);
    RC_ASSERT(std::abs(back.maxX() - box.maxX()) <= tolerance);
    RC_ASSERT(std::abs(back.minY() - box.minY()) <= tolerance);
    RC_ASSERT(std::abs(back.maxY() - box.maxY()) <= tolerance);
}

} // namespace
} // namespace kelvaro
