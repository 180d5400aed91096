#include "develop/ToneAnalysis.h"

#include "develop/BrushRaster.h"
#include "develop/Guides.h"
#include "develop/Pictures.h"
#include "develop/Recipes.h"
#include "platform/imaging/ReferenceRenderer.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kelvaro {
namespace {

// Counts what is drawn, and can fail.
class CountingRenderer final : public Renderer {
public:
    Result<Raster> renderRaster(const Image& image, const PixelRect& rect,
                                const Cancellation* cancellation) override {
        ++count;
        if (failing) return fail(FailureKind::cancelled, "Cancelled.");
        return plain_->renderRaster(image, rect, cancellation);
    }
    Result<std::vector<Raster>> renderRasters(const std::vector<Image>& images,
                                              const PixelRect& rect,
                                              const Cancellation* cancellation) override {
        ++count;
        if (failing) return fail(FailureKind::cancelled, "Cancelled.");
        return plain_->renderRasters(images, rect, cancellation);
    }
    Result<Bitmap> renderBitmap(const Image& image, const PixelRect& rect,
                                const BitmapFormat& format,
                                const Cancellation* cancellation) override {
        return plain_->renderBitmap(image, rect, format, cancellation);
    }
    int count = 0;
    bool failing = false;

private:
    std::unique_ptr<Renderer> plain_ = makeReferenceRenderer();
};

class ToneAnalysisTest : public testing::Test {
protected:
    ImageSource bitmap() {
        const PixelSize size{60, 40};
        return bitmapSource("a.png", "1", test::testPicture(size, 1), size);
    }
    ImageSource raw(float gain = 1) {
        RawProperties properties;
        properties.size = {60, 40};
        const Image capture = test::imageOf({60, 40}, [&](int x, int y) {
            const float grey = gain * std::exp2(float(x) / 6 - 8) * (y % 3 ? 1.0f : 0.7f);
            return test::Pixel{grey, grey * 0.9f, grey * 0.6f, 1};
        });
        return rawSource("a.nef", "1", capture, properties);
    }
    ToneMaps mapsOf(const ImageSource& source, const Adjustments& edit) {
        auto maps = toneMaps(source, edit, renderer_, nullptr);
        EXPECT_TRUE(maps);
        return maps ? *maps : ToneMaps{};
    }
    CountingRenderer renderer_;
};

TEST(AnalysisSize, ReducesToTheLongerSideAndNeverEnlarges) {
    EXPECT_EQ(analysisSize({6000, 4000}), (PixelSize{512, 341}));
    EXPECT_EQ(analysisSize({4000, 6001}), (PixelSize{341, 512}));
    EXPECT_EQ(analysisSize({512, 512}), (PixelSize{512, 512}));
    EXPECT_EQ(analysisSize({300, 20}), (PixelSize{300, 20}));
    EXPECT_EQ(analysisSize({1, 5000}), (PixelSize{1, 512}));
    EXPECT_EQ(analysisSize({5000, 5000}), (PixelSize{512, 512}));
}

TEST_F(ToneAnalysisTest, MeasuresOnlyWhatARecipeNeedsAndOnlyOnce) {
    const ImageSource source = bitmap();
    Adjustments edit;
    edit.hue = 30;
    EXPECT_FALSE(mapsOf(source, edit).guide);
    EXPECT_EQ(renderer_.count, 0);

    edit.clarity = 20;
    const Image guide = mapsOf(source, edit).guide;
    ASSERT_TRUE(guide);
    EXPECT_FALSE(mapsOf(source, edit).sceneGuide);
    const int afterGuide = renderer_.count;
    EXPECT_GT(afterGuide, 0);
    edit.exposure = 2; // moves no analysis of a bitmap
    EXPECT_EQ(mapsOf(source, edit).guide, guide);
    EXPECT_EQ(renderer_.count, afterGuide);

    edit = test::everything();
    const ToneMaps all = mapsOf(source, edit);
    EXPECT_TRUE(all.guide == guide && all.sceneGuide && all.haze && all.endpoints);
    const int afterAll = renderer_.count;
    mapsOf(source, edit);
    EXPECT_EQ(renderer_.count, afterAll);
}

TEST_F(ToneAnalysisTest, AFailureIsToldAndNotKept) {
    const ImageSource source = bitmap();
    Adjustments edit;
    edit.shadows = 20;
    renderer_.failing = true;
    const auto failed = toneMaps(source, edit, renderer_, nullptr);
    ASSERT_FALSE(failed);
    EXPECT_EQ(failed.error().kind, FailureKind::cancelled);
    renderer_.failing = false;
    EXPECT_TRUE(mapsOf(source, edit).sceneGuide);
}

TEST_F(ToneAnalysisTest, ShiftsRawLevelsByTheExposure) {
    Adjustments edit;
    edit.contrast = 20;
    const ToneEndpoints still = *mapsOf(raw(), edit).endpoints;
    edit.exposure = 1.5;
    const ToneEndpoints lifted = *mapsOf(raw(), edit).endpoints;
    EXPECT_NEAR(lifted.x, still.x + 1.5, 1e-9);
    EXPECT_NEAR(lifted.y, still.y + 1.5, 1e-9);
    EXPECT_EQ(lifted.z, still.z);
    EXPECT_EQ(lifted.w, still.w);
}

// Half the light and one stop more exposure are the same photo, so they must develop alike: levels,
// guide and airlight all have to follow the exposure.
TEST_F(ToneAnalysisTest, ExposureIsWorthTheSameAsLight) {
    BrushRaster brushes;
    Adjustments edit = test::typical();
    edit.dehaze = 40;
    edit.exposure = 0.5;
    const Image bright = *developedPhoto(raw(1), edit, 1, renderer_, brushes, nullptr);
    edit.exposure = 1.5;
    const Image dark = *developedPhoto(raw(0.5f), edit, 1, renderer_, brushes, nullptr);
    const auto difference =
        test::worstDifference(test::drawn(renderer_, dark), test::drawn(renderer_, bright));
    EXPECT_LT(difference.worst, 1e-4) << difference.where;
}

TEST_F(ToneAnalysisTest, TheRawClarityGuideFollowsTheDevelopment) {
    const ImageSource source = raw();
    Adjustments edit;
    edit.clarity = 30;
    const Image guide = mapsOf(source, edit).guide;
    ASSERT_TRUE(guide);
    edit.vignette = 20; // not a RAW parameter
    EXPECT_EQ(mapsOf(source, edit).guide, guide);
    edit.contrast = 50;
    EXPECT_FALSE(mapsOf(source, edit).guide == guide);
}

// A guide is a y + b. On a flat picture nothing varies: a = 0 and b is the picture's own log
// luminance, log2(0.18 + 0.0005); in the scene guide b is log2 of the colour length over √3.
TEST_F(ToneAnalysisTest, GuidesOfAFlatPictureAreItsBrightness) {
    const Image flat = test::imageOf({40, 30}, [](int, int) {
        return test::Pixel{0.18f, 0.18f, 0.18f, 1};
    });
    const auto guide =
        test::pixelAt(test::drawn(renderer_, *toneGuide(flat, renderer_, nullptr)), 0, 29);
    EXPECT_NEAR(guide[0], 0, 1e-4);
    EXPECT_NEAR(guide[1], std::log2(0.1805), 1e-4);
    const auto scene =
        test::pixelAt(test::drawn(renderer_, *sceneGuide(flat, renderer_, nullptr)), 20, 15);
    EXPECT_NEAR(scene[0], 0, 1e-4);
    EXPECT_NEAR(scene[1], std::log2(0.18), 1e-4);
    EXPECT_NEAR(scene[2], 0, 1e-4);
}

// Far from an edge of 10 stops the guide is as on a flat picture; at the edge it follows the
// picture (a near 1), which is what keeps halos away.
TEST_F(ToneAnalysisTest, GuidesKeepEdges) {
    const Image step = test::imageOf({120, 40}, [](int x, int) {
        const float grey = x < 60 ? 0.001f : 1.0f;
        return test::Pixel{grey, grey, grey, 1};
    });
    const Raster guide = test::drawn(renderer_, *sceneGuide(step, renderer_, nullptr));
    EXPECT_NEAR(test::pixelAt(guide, 2, 20)[0], 0, 1e-3);
    EXPECT_NEAR(test::pixelAt(guide, 2, 20)[1], std::log2(0.001), 0.02);
    EXPECT_GT(test::pixelAt(guide, 59, 20)[0], 0.9f);
}

} // namespace
} // namespace kelvaro
