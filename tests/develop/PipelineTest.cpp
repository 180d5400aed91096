#include "develop/Pipeline.h"
#include "develop/PreparedControls.h"

#include "develop/BrushRaster.h"
#include "develop/CropGeometry.h"
#include "develop/Pictures.h"
#include "develop/RawToneFilter.h"
#include "develop/Recipes.h"
#include "develop/ToneAnalysis.h"
#include "platform/imaging/ReferenceRenderer.h"
#include "platform/imaging/TiledRenderer.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <numbers>

namespace kelvaro {
namespace {

using test::everything;
using test::operationsOf;
using test::uniformsOf;
using testing::ElementsAreArray;
using Names = std::vector<std::string>;

class PipelineTest : public testing::Test {
protected:
    ImageSource bitmap(PixelSize size = {48, 32}) {
        return bitmapSource("picture.png", "1", test::testPicture(size, 1), size);
    }
    ImageSource raw(PixelSize size = {48, 32}) {
        RawProperties properties;
        properties.size = size;
        properties.asShotTemperature = 5200;
        properties.asShotTint = 5;
        return rawSource("picture.nef", "1", test::testPicture(size, 12), properties);
    }
    Image developed(const ImageSource& source, const Adjustments& edit, double scale = 1) {
        auto image = developedPhoto(source, edit, scale, *renderer_, brushes_, nullptr);
        EXPECT_TRUE(image);
        return *image;
    }
    Names bitmapOperations(const Adjustments& edit) {
        return operationsOf(developed(bitmap(), edit));
    }

    std::unique_ptr<Renderer> renderer_ = makeReferenceRenderer();
    BrushRaster brushes_;
    Pipeline pipeline_{*renderer_, brushes_};
};

TEST_F(PipelineTest, AnUneditedBitmapIsTheVeryInput) {
    const ImageSource source = bitmap();
    EXPECT_EQ(developed(source, {}), source.bitmap);
    EXPECT_EQ(pipeline_.finished(source.bitmap, {}, nullptr, false, 1), source.bitmap);
    EXPECT_EQ(straightenedAndCropped(developed(source, {}), {}), source.bitmap);
}

TEST_F(PipelineTest, RunsTheStagesOfABitmapInTheirOrder) {
    EXPECT_THAT(bitmapOperations(everything()),
                ElementsAreArray(Names{"source", "bitmapRelit", "sceneHaze", "kelvaroTone",
                                       "bitmapTone", "twLocal", "twColour", "twMono", "twVignette",
                                       "kelvaroGrain", "twGamut"}));
}

TEST_F(PipelineTest, RunsTheStagesOfARawPhotoInTheirOrder) {
    ImageSource source = raw();
    source.referenceImage = test::testPicture({48, 32}, 11);
    const Image image = developed(source, everything());
    EXPECT_THAT(operationsOf(image),
                ElementsAreArray(Names{"source", "colourMatrix", "rawColour", "sceneHaze",
                                       "rawTone", "rawRendering", "kelvaroTone", "twLocal",
                                       "twColour", "twMono", "twVignette", "kelvaroGrain"}));
    EXPECT_THAT(operationsOf(developed(source, {})),
                ElementsAreArray(Names{"source", "rawColour", "rawRendering"}));
    source.referenceImage = {};
    EXPECT_THAT(operationsOf(developed(source, {})),
                ElementsAreArray(Names{"source", "rawRendering"}));
}

// The reference of rawColour carries the current white balance, and not the exposure.
TEST_F(PipelineTest, BalancesTheReferenceOfRawColour) {
    ImageSource source = raw();
    source.referenceImage = test::testPicture({48, 32}, 11);
    Adjustments edit;
    edit.exposure = 1;
    edit.temperature = 40;
    const Image image = developed(source, edit);
    const Image& rawColour = image.node().inputs.front(); // below rawRendering
    ASSERT_STREQ(operationName(rawColour.node()), "rawColour");
    EXPECT_THAT(operationsOf(rawColour.node().inputs[1]),
                ElementsAreArray(Names{"source", "colourMatrix"}));
}

TEST_F(PipelineTest, EachControlBringsOnlyItsOwnStages) {
    const Names tone{"bitmapTone"}, light{"bitmapRelit"};
    const struct {
        double Adjustments::*field;
        double value;
        Names stages;
    } cases[] = {
        {&Adjustments::exposure, 1, light},
        {&Adjustments::temperature, -10, light},
        {&Adjustments::tint, 10, light},
        {&Adjustments::dehaze, 10, {"sceneHaze"}},
        {&Adjustments::clarity, -10, {"kelvaroTone"}},
        {&Adjustments::brightness, 10, {"kelvaroTone"}},
        {&Adjustments::shadows, 10, tone},
        {&Adjustments::highlights, 10, tone},
        {&Adjustments::contrast, 10, tone},
        {&Adjustments::white, 10, tone},
        {&Adjustments::black, 10, tone},
        {&Adjustments::hue, 10, {"twColour"}},
        {&Adjustments::saturation, 10, {"twColour"}},
        {&Adjustments::vibrance, 10, {"twColour"}},
        {&Adjustments::blackAndWhite, 1, {"twMono"}},
        {&Adjustments::vignette, 10, {"twVignette"}},
        {&Adjustments::grain, 10, {"kelvaroGrain"}},
        {&Adjustments::grainSize, 10, {}},
        {&Adjustments::sharpness, 10, {}},
        {&Adjustments::cropTop, 0.1, {}},
        {&Adjustments::straighten, 1, {}},
    };
    for (const auto& c : cases) {
        Adjustments edit;
        edit.*c.field = c.value;
        Names expected{"source"};
        expected.insert(expected.end(), c.stages.begin(), c.stages.end());
        expected.push_back("twGamut"); // any edit keeps a bitmap inside Display P3
        EXPECT_THAT(bitmapOperations(edit), ElementsAreArray(expected));
    }
    Adjustments masked;
    masked.masks = {LocalMask{}};
    EXPECT_THAT(bitmapOperations(masked), ElementsAreArray(Names{"source", "twGamut"}));
}

TEST_F(PipelineTest, MasksWithoutEffectAddNothing) {
    const auto withMask = [&](auto change) {
        Adjustments edit;
        edit.masks = {test::everyShapeMask()};
        change(edit.masks.front());
        return bitmapOperations(edit);
    };
    const Names none{"source", "twGamut"};
    EXPECT_EQ(withMask([](LocalMask&) {}), (Names{"source", "twLocal", "twGamut"}));
    EXPECT_EQ(withMask([](LocalMask& m) { m.enabled = false; }), none);
    EXPECT_EQ(withMask([](LocalMask& m) { m.amount = 0; }), none);
    EXPECT_EQ(withMask([](LocalMask& m) { m.amount = -5; }), none);
    EXPECT_EQ(withMask([](LocalMask& m) { m.components.clear(); }), none);
    EXPECT_EQ(withMask([](LocalMask& m) {
                  LocalMask plain;
                  plain.components = m.components;
                  m = plain;
              }),
              none);
}

TEST_F(PipelineTest, ScalesControlsToArguments) {
    Adjustments edit = everything();
    edit.hue = 100;
    edit.masks.front().clarity = 50;
    const Image image = developed(bitmap(), edit);
    const auto near = [](std::vector<double> values) {
        std::vector<testing::Matcher<double>> matchers;
        for (const double value : values)
            matchers.push_back(testing::DoubleNear(value, 1e-9));
        return ElementsAreArray(matchers);
    };
    EXPECT_THAT(uniformsOf(image, "twColour"), near({std::numbers::pi / 2, 0.2, 0.3}));
    EXPECT_THAT(uniformsOf(image, "kelvaroTone"), near({0.1, 0.4, 1, 0}));
    const auto tone = uniformsOf(image, "bitmapTone"); // shifted by the exposure
    EXPECT_THAT(std::vector<double>(tone.begin(), tone.begin() + 6),
                near({0.6, -0.4, 0.5, 0.3, 0.2, -0.15}));
    EXPECT_THAT(uniformsOf(image, "twLocal"), near({0.7, 0.3, -0.2, 0.25, -0.3, 0.4, 0.5, 0.2}));
    // 48 × 32, crop from x = 4.8: its centre lies 2.4 to the right, half sizes 21.6 and 16.
    EXPECT_THAT(uniformsOf(image, "twVignette"),
                near({24, 16, 2.4, 0, 21.6, 16, std::cos(std::numbers::pi / 60),
                      -std::sin(std::numbers::pi / 60), -0.4}));
    // Fine 0.35, medium 0.35 + 0.8, coarse 0.35 + 0.2; length sqrt(0.1225 + 1.3225 + 0.3025).
    const double length = std::sqrt(1.7475);
    EXPECT_THAT(uniformsOf(image, "kelvaroGrain"),
                near({0.3, 0.36, 1, 0.35 / length, 1.15 / length, 0.55 / length}));
    EXPECT_EQ(uniformsOf(image, "sceneHaze")[0], 0.35);
}

TEST_F(PipelineTest, GrainIsSizedForTheFullPhoto) {
    Adjustments edit;
    edit.grain = 50;
    ImageSource source = bitmap();
    source.extent = {0, 0, 12000, 8000}; // the picture at hand is a preview of it
    source.pixelScale = 48.0 / 12000;
    const auto g = uniformsOf(developed(source, edit), "kelvaroGrain");
    EXPECT_NEAR(g[1], 1.2 * 2, 1e-9);
    EXPECT_NEAR(g[2], 0.004, 1e-12);
}

TEST_F(PipelineTest, DrawsAtTheRequestedScale) {
    const ImageSource source = bitmap({49, 32});
    EXPECT_EQ(developed(source, {}, 0.5).extent(), (PixelRect{0, 0, 25, 16}));
    for (const double scale : {1.0, 3.0, 0.0, -1.0, std::nan("")})
        EXPECT_EQ(developed(source, {}, scale), source.bitmap) << scale;
}

// Single precision alone costs some 3e-6. Where the gamut stages bisect, a step that falls the
// other way moves the result by their tolerance of 0.0005 at most.
TEST_F(PipelineTest, TheFastRendererAgreesWithThePlainOne) {
    const auto fast = makeTiledRenderer(2);
    Adjustments strong;
    strong.exposure = -1.5;
    strong.shadows = 150;
    strong.highlights = -100;
    strong.contrast = -60;
    strong.clarity = -80;
    strong.dehaze = -70;
    strong.saturation = 80;
    strong.vignette = 60;
    Adjustments colour = everything();
    colour.blackAndWhite = 0;
    const PixelSize size{100, 44};
    for (const Adjustments& edit : {test::typical(), everything(), colour, strong})
        for (const ImageSource& source : {bitmap(size), raw(size)}) {
            const Image image =
                Pipeline::gamutMapped(straightenedAndCropped(developed(source, edit), edit),
                                      Pipeline::OutputSpace::displayP3);
            const auto difference =
                test::worstDifference(test::drawn(*fast, image), test::drawn(*renderer_, image));
            EXPECT_LT(difference.worst, 5e-4) << difference.where;
        }
}

TEST_F(PipelineTest, OtherPixelsOfAPhotoKeepItsAnalysis) {
    for (const ImageSource& source : {bitmap(), raw()}) {
        const ImageSource preview = withPixels(source, test::testPicture({24, 16}, 1));
        EXPECT_EQ(preview.isRaw(), source.isRaw());
        EXPECT_EQ(preview.pixelScale, 0.5);
        EXPECT_EQ(preview.extent, source.extent);
        const Image image = developed(preview, test::typical());
        EXPECT_EQ(image.extent(), (PixelRect{0, 0, 24, 16}));
        const auto endpoints = toneMaps(preview, test::typical(), *renderer_, nullptr)->endpoints;
        EXPECT_EQ(toneMaps(source, test::typical(), *renderer_, nullptr)->endpoints, endpoints);
    }
}

TEST_F(PipelineTest, RawDecodesFollowScaleAndSharpness) {
    Adjustments edit;
    edit.sharpness = 30;
    RawProperties properties;
    EXPECT_EQ(rawSettings(edit, properties, 1).sharpness, 0);
    properties.supportsSharpness = true;
    EXPECT_EQ(rawSettings(edit, properties, 1).sharpness, 30);
    EXPECT_EQ(rawSettings(edit, properties, 1).reduction, 1);
    EXPECT_EQ(rawSettings(edit, properties, 0.51).reduction, 1);
    EXPECT_EQ(rawSettings(edit, properties, 0.5).reduction, 2);
    EXPECT_EQ(rawSettings(edit, properties, 0).reduction, 1);
    const PreparedControls controls = preparedControls(edit, properties);
    EXPECT_EQ(controls.native.reduction, 1);
    EXPECT_EQ(controls.preview.reduction, 2);
    EXPECT_EQ(controls.preview.sharpness, controls.native.sharpness);
    // Settled views are made of all pixels that memory has room for.
    for (const auto& [size, reduction] :
         {std::pair(PixelSize{4000, 3000}, 1), std::pair(PixelSize{6000, 4000}, 2)}) {
        properties.size = size;
        EXPECT_EQ(rawSettings(edit, properties, 0.2, true).reduction, reduction);
        EXPECT_EQ(rawSettings(edit, properties, 0.2, true).fine, reduction == 2);
        EXPECT_EQ(rawSettings(edit, properties, 0.4, true).reduction, 1);
    }
}

TEST(RawToneFilterTest, TakesTheLinearInputAndItsGain) {
    const Image input = test::testPicture({8, 6}, 1), linear = test::testPicture({8, 6}, 2);
    const Adjustments edit;
    RawToneFilter filter{.inputImage = input,
                         .settings = edit,
                         .guide = {},
                         .guideShift = 0,
                         .haze = {},
                         .airlight = {},
                         .linearInput = {},
                         .linearGain = 1,
                         .endpoints = {}};
    EXPECT_EQ(filter.outputImage(), input);
    filter.linearInput = linear;
    EXPECT_EQ(filter.outputImage(), linear);
    filter.linearGain = 1.5;
    const Image gained = filter.outputImage();
    const auto* matrix = std::get_if<ColourMatrixOperation>(&gained.node().operation);
    ASSERT_TRUE(matrix);
    EXPECT_EQ(matrix->rows, (Matrix3{{{1.5, 0, 0}, {0, 1.5, 0}, {0, 0, 1.5}}}));
}

TEST_F(PipelineTest, AlphaIsCarriedUntouched) {
    const Image picture = imageFrom(test::rasterOf({40, 30}, true, [](int x, int y) {
        const float alpha = float(x % 4) / 3;
        return test::Pixel{0.5f * alpha, 0.1f * float(y % 7) * alpha, 0.2f * alpha, alpha};
    }));
    const ImageSource source = bitmapSource("layer.png", "1", picture, {40, 30});
    const Raster result = test::drawn(*renderer_, developed(source, everything()));
    ASSERT_TRUE(result.hasAlpha());
    for (int x = 0; x < 4; ++x)
        EXPECT_EQ(test::pixelAt(result, x, 5)[3], float(x) / 3);
}

TEST_F(PipelineTest, NamesTheOutputSpaces) {
    EXPECT_EQ(Pipeline::rawValue(Pipeline::OutputSpace::sRGB), "sRGB");
    EXPECT_EQ(Pipeline::rawValue(Pipeline::OutputSpace::displayP3), "displayP3");
    for (const auto space : Pipeline::allOutputSpaces)
        EXPECT_EQ(Pipeline::outputSpace(Pipeline::rawValue(space)), space);
    EXPECT_FALSE(Pipeline::outputSpace("DisplayP3"));
}

// A colour inside Display P3 but outside sRGB: P3's pure green.
TEST_F(PipelineTest, OutputSpacesDifferWhereTheirGamutsDo) {
    const Image green = test::imageOf({1, 1}, [](int, int) {
        return test::Pixel{-0.2249404f, 1.0420571f, -0.0786361f, 1};
    });
    const auto samples = [&](Pipeline::OutputSpace space) {
        const auto bitmap =
            renderer_->renderBitmap(Pipeline::gamutMapped(green, space), {0, 0, 1, 1},
                                    Pipeline::bitmapFormat(space, SampleType::u8));
        const auto* row = bitmap->row<std::uint8_t>(0);
        return std::array<int, 3>{row[0], row[1], row[2]};
    };
    EXPECT_EQ(samples(Pipeline::OutputSpace::displayP3), (std::array<int, 3>{0, 255, 0}));
    // Clipping would give 0, 255, 0; reduced chroma at equal lightness gives a lighter green.
    const auto srgb = samples(Pipeline::OutputSpace::sRGB);
    EXPECT_GT(srgb[2], 30);
    EXPECT_GT(srgb[1], 200);
}

// The largest step of a channel between neighbours of a row, as a screen shows it.
float largestStep(const Raster& row) {
    float largest = 0;
    const auto shown = [&](int x, std::size_t channel) {
        return std::clamp(test::pixelAt(row, x, 0)[channel], 0.0f, 1.0f);
    };
    for (int x = 1; x < row.extent().width; ++x)
        for (std::size_t channel = 0; channel < 3; ++channel)
            largest = std::max(largest, std::abs(shown(x, channel) - shown(x - 1, channel)));
    return largest;
}

// A sunlit wall that a mask brightens beyond white: no yellow patch beside the white.
TEST_F(PipelineTest, HighlightsTurnWhiteWithoutAnEdge) {
    const Image wall = test::imageOf({400, 1}, [](int x, int) {
        const float light = 0.7f + 0.0025f * float(x);
        return test::Pixel{light, 0.8f * light, 0.5f * light, 1};
    });
    for (const auto space : Pipeline::allOutputSpaces) {
        const Raster shown = test::drawn(*renderer_, Pipeline::gamutMapped(wall, space));
        EXPECT_LT(largestStep(shown), 0.03f);
        EXPECT_EQ(test::pixelAt(shown, 399, 0), (test::Pixel{1, 1, 1, 1}));
    }
}

// A white that the camera clipped takes the tint of the light greys around it.
TEST_F(PipelineTest, WhiteBalanceLeavesNoEdgeAroundWhite) {
    Adjustments edit;
    edit.temperature = -100;
    const PixelSize size{401, 1};
    const Image greys = test::imageOf(size, [](int x, int) {
        const float light = 0.8f + 0.0005f * float(x);
        return test::Pixel{light, light, light, 1};
    });
    const ImageSource source = bitmapSource("a.png", "", greys, size);
    const Raster shown = test::drawn(
        *renderer_, Pipeline::gamutMapped(developed(source, edit), Pipeline::OutputSpace::sRGB));
    EXPECT_LT(largestStep(shown), 0.02f);
    EXPECT_LT(test::pixelAt(shown, 400, 0)[0], 0.8f) << "still blue";
}

TEST_F(PipelineTest, ShowsClippingAndMasks) {
    const Image picture = test::imageOf({3, 1}, [](int x, int) {
        const float grey = x == 0 ? 0 : x == 1 ? 0.3f : 1;
        return test::Pixel{grey, grey, grey, 1};
    });
    const Raster clipping = test::drawn(*renderer_, Pipeline::withClippingShown(picture));
    EXPECT_EQ(test::pixelAt(clipping, 0, 0), (test::Pixel{0, 0.25f, 1, 1}));
    EXPECT_EQ(test::pixelAt(clipping, 1, 0), (test::Pixel{0.3f, 0.3f, 0.3f, 1}));
    EXPECT_EQ(test::pixelAt(clipping, 2, 0), (test::Pixel{1, 0.02f, 0.02f, 1}));

    EXPECT_EQ(Pipeline::withMaskShown(picture, {}), picture);
    const Image weight = test::imageOf({3, 1}, [](int x, int) {
        return test::Pixel{float(x) / 2, float(x) / 2, float(x) / 2, 1};
    });
    const Raster masked = test::drawn(*renderer_, Pipeline::withMaskShown(picture, weight));
    EXPECT_EQ(test::pixelAt(masked, 0, 0), (test::Pixel{0, 0, 0, 1}));
    EXPECT_NEAR(test::pixelAt(masked, 2, 0)[0], 1, 1e-6);
    EXPECT_NEAR(test::pixelAt(masked, 2, 0)[1], 1 + (0.17 - 1) * 0.55, 1e-6);
    EXPECT_NEAR(test::pixelAt(masked, 2, 0)[2], 0.45, 1e-6);
}

} // namespace
} // namespace kelvaro
