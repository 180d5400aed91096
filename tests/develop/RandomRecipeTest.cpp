// Whole recipes at random: every executor draws the same picture, at every odd size, across tile
// edges and from any number of threads; and what a session may keep between two frames is as good
// as drawing all of it.
#include "develop/BrushRaster.h"
#include "develop/CropGeometry.h"
#include "develop/Guides.h"
#include "develop/Pictures.h"
#include "develop/Recipes.h"
#include "develop/ScalarForm.h"
#include "develop/ToneAnalysis.h"
#include "platform/imaging/ReferenceRenderer.h"
#include "platform/imaging/SameBits.h"
#include "platform/imaging/TiledRenderer.h"
#include "recipe/AdjustmentCatalogue.h"

#include <gtest/gtest.h>
#include <random>

namespace kelvaro {
namespace {

struct Development {
    ImageSource source;
    Adjustments edit;

    Image image(Renderer& renderer, BrushRaster& brushes) const {
        const auto developed = developedPhoto(source, edit, 1, renderer, brushes, nullptr);
        EXPECT_TRUE(developed);
        return Pipeline::gamutMapped(straightenedAndCropped(*developed, edit),
                                     Pipeline::OutputSpace::displayP3);
    }
};

Development randomDevelopment(unsigned seed, PixelSize size) {
    test::RandomRecipes recipes(seed);
    const bool raw = seed % 2 == 0;
    const Image picture = seed % 3 == 0 ? test::noisePicture(size, seed)
                                        : test::testPicture(size, raw ? 12.0f : 1.0f);
    RawProperties properties;
    properties.size = size;
    return {raw ? rawSource("a.nef", "", picture, properties)
                : bitmapSource("a.png", "", picture, size),
            recipes.next()};
}

// A chain of two dozen stages in single precision, strong exposure and contrast multiplying what
// the first ones lost. Where a gamut stage bisects, a step that falls the other way moves the
// result by its tolerance of 0.0005, and by a tenth of that share of a value beyond white.
constexpr double kTolerance = 1e-3;

TEST(RandomRecipes, AllExecutorsDrawTheSame) {
    const auto plain = makeReferenceRenderer(), one = makeTiledRenderer(1);
    const PixelSize sizes[] = {{1, 1}, {2, 3}, {31, 22}, {37, 19}, {521, 3}, {5, 47}};
    BrushRaster brushes;
    for (unsigned seed = 1; seed <= 60; ++seed) {
        const Image image =
            randomDevelopment(seed, sizes[seed % std::size(sizes)]).image(*one, brushes);
        const Raster expected = test::drawn(*plain, image);
        const Raster vector = test::drawn(*one, image);
        const Raster scalar = test::drawn(*one, test::ScalarForm().of(image));
        const auto fromVector = test::worstDifference(vector, expected);
        EXPECT_LT(fromVector.worst, kTolerance) << "seed " << seed << ": " << fromVector.where;
        const auto fromScalar = test::worstDifference(scalar, expected);
        EXPECT_LT(fromScalar.worst, kTolerance) << "seed " << seed << ": " << fromScalar.where;
    }
}

TEST(RandomRecipes, AnyNumberOfThreadsDrawsTheSameBits) {
    const auto one = makeTiledRenderer(1);
    BrushRaster brushes;
    for (unsigned seed = 1; seed <= 14; ++seed) {
        const Image image = randomDevelopment(seed, {777, 301}).image(*one, brushes);
        const Raster alone = test::drawn(*one, image);
        for (int threads = 2; threads <= 8; ++threads)
            EXPECT_TRUE(test::sameBits(alone, test::drawn(*makeTiledRenderer(threads), image)))
                << "seed " << seed << ", " << threads << " threads";
    }
}

// Tiles begin where the rectangle does: a part drawn alone has its tile edges elsewhere.
TEST(RandomRecipes, APartDrawnAloneIsThatPartOfTheWhole) {
    const auto renderer = makeTiledRenderer(2);
    BrushRaster brushes;
    std::mt19937 random(11);
    const auto upTo = [&](int most) { return int(random() % unsigned(most)); };
    for (unsigned seed = 1; seed <= 30; ++seed) {
        const Image image = randomDevelopment(seed, {1201, 67}).image(*renderer, brushes);
        const Raster whole = test::drawn(*renderer, image);
        const PixelRect& extent = image.extent();
        const PixelRect from{extent.x + upTo(extent.width), extent.y + upTo(extent.height),
                             1 + upTo(700), 1 + upTo(40)};
        const PixelRect part = intersection(from, extent);
        const auto alone = renderer->renderRaster(image, part);
        ASSERT_TRUE(alone);
        for (int y = part.y; y < part.top(); ++y)
            for (int x = part.x; x < part.right(); ++x)
                ASSERT_EQ(test::pixelAt(*alone, x, y), test::pixelAt(whole, x, y))
                    << "seed " << seed << " at " << x << ", " << y;
    }
}

// A session draws the RAW stage once and finishes it anew for each frame.
TEST(RandomRecipes, FinishingAKeptRawStageDrawsTheSameBits) {
    const auto renderer = makeTiledRenderer(2);
    BrushRaster brushes;
    const Pipeline pipeline(*renderer, brushes);
    for (unsigned seed = 2; seed <= 20; seed += 2) {
        const Development photo = randomDevelopment(seed, {300, 200});
        const auto maps = toneMaps(photo.source, photo.edit, *renderer, nullptr);
        ASSERT_TRUE(maps);
        const auto kept =
            materialised(Pipeline::rawDeveloped(photo.source.linearCapture, {},
                                                photo.source.asShot(), photo.edit, *maps),
                         *renderer, nullptr);
        ASSERT_TRUE(kept);
        const Image fromKept = pipeline.finished(*kept, photo.edit, &*maps, true, 1);
        const Image whole = pipeline.developed(photo.source, photo.edit, &*maps, 1);
        EXPECT_TRUE(test::sameBits(test::drawn(*renderer, fromKept), test::drawn(*renderer, whole)))
            << "seed " << seed;
    }
}

// Which controls the RAW stage reads is what RawParams says: all others leave its graph alone, so
// that a kept picture of it serves.
TEST(RandomRecipes, OnlyRawParamsReachTheRawStage) {
    const auto renderer = makeTiledRenderer(1);
    const Development photo = randomDevelopment(2, {40, 30});
    const auto stage = [&](const Adjustments& edit) {
        const auto maps = toneMaps(photo.source, test::everything(), *renderer, nullptr);
        const Image image = Pipeline::rawDeveloped(photo.source.linearCapture, {},
                                                   photo.source.asShot(), edit, *maps);
        return test::drawn(*renderer, image);
    };
    const Adjustments base;
    const Raster before = stage(base);
    for (const AdjustmentSpec& spec : storedKeyCatalogue()) {
        Adjustments edit = base;
        spec.setValue(edit, spec.range.upper);
        const bool shouldBeSame = RawParams(edit) == RawParams(base);
        if (!shouldBeSame && spec.id == "sharpness") continue; // the decoder's
        EXPECT_EQ(test::sameBits(stage(edit), before), shouldBeSame) << spec.id;
    }
    Adjustments masked;
    masked.masks = {test::everyShapeMask()};
    EXPECT_TRUE(RawParams(masked) == RawParams(base) && test::sameBits(stage(masked), before));
}

} // namespace
} // namespace kelvaro
