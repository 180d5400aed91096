// Photos and recipes that nobody means to have: everything must end, and every pixel must be a
// number.
#include "develop/BrushRaster.h"
#include "develop/CropGeometry.h"
#include "develop/MaskShapes.h"
#include "develop/Pictures.h"
#include "develop/Recipes.h"
#include "develop/ToneAnalysis.h"
#include "platform/imaging/ReferenceRenderer.h"
#include "platform/imaging/TiledRenderer.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <limits>

namespace kelvaro {
namespace {

struct OddPhoto {
    const char* name;
    PixelSize size;
    bool alpha;
    std::function<test::Pixel(int, int)> colour;
};

std::vector<OddPhoto> oddPhotos() {
    const auto flat = [](float value) {
        return [=](int, int) { return test::Pixel{value, value, value, 1}; };
    };
    return {
        {"one pixel", {1, 1}, false, flat(0.4f)},
        {"one column",
         {1, 5000},
         false,
         [](int, int y) {
             const float v = float(y) / 5000;
             return test::Pixel{v, v * v, 0.1f, 1};
         }},
        {"one row", {700, 1}, false, flat(0.2f)},
        {"black", {9, 7}, false, flat(0)},
        {"clipped", {9, 7}, false, flat(1)},
        {"far beyond white", {9, 7}, false, flat(60000)},
        {"tiny values", {9, 7}, false, flat(std::numeric_limits<float>::denorm_min())},
        {"negative", {9, 7}, false, flat(-0.5f)},
        {"enormous numbers",
         {9, 7},
         false,
         [](int x, int) {
             return x % 2 ? test::Pixel{1e12f, -1e12f, 1e12f, 1} : test::Pixel{0, 0, 0, 1};
         }},
        {"transparent",
         {9, 7},
         true,
         [](int, int) {
             return test::Pixel{0, 0, 0, 0};
         }},
        {"half transparent",
         {9, 7},
         true,
         [](int x, int) {
             const float a = float(x) / 8;
             return test::Pixel{0.5f * a, 0.2f * a, 0.1f * a, a};
         }},
    };
}

Adjustments strongest(double sign) {
    Adjustments edit = test::everything();
    edit.blackAndWhite = 0;
    for (const auto field :
         {&Adjustments::temperature, &Adjustments::tint, &Adjustments::highlights,
          &Adjustments::shadows, &Adjustments::brightness, &Adjustments::contrast,
          &Adjustments::white, &Adjustments::black, &Adjustments::hue, &Adjustments::saturation,
          &Adjustments::vibrance, &Adjustments::clarity, &Adjustments::dehaze,
          &Adjustments::vignette, &Adjustments::grainSize})
        edit.*field = 100 * sign;
    edit.exposure = 4 * sign;
    edit.grain = 100;
    edit.straighten = 45 * sign;
    edit.cropLeft = edit.cropRight = edit.cropTop = edit.cropBottom = 0.98;
    return edit;
}

void expectNumbers(Renderer& renderer, const Image& image, const std::string& what) {
    const Raster pixels = test::drawn(renderer, image);
    int wrong = 0;
    for (int plane = 0; plane < (pixels.hasAlpha() ? 4 : 3); ++plane)
        for (int y = 0; y < pixels.extent().height; ++y)
            for (int x = 0; x < pixels.extent().width; ++x)
                wrong += !std::isfinite(pixels.row(plane, y)[x]);
    EXPECT_EQ(wrong, 0) << what;
}

TEST(Degenerate, EveryPhotoDevelopsToNumbers) {
    const auto renderer = makeTiledRenderer(1);
    BrushRaster brushes;
    for (const OddPhoto& photo : oddPhotos())
        for (const bool raw : {false, true})
            for (const Adjustments& edit : {Adjustments{}, test::typical(), test::everything(),
                                            strongest(1), strongest(-1)}) {
                const Image picture =
                    imageFrom(test::rasterOf(photo.size, photo.alpha, photo.colour));
                RawProperties properties;
                properties.size = photo.size;
                const ImageSource source = raw ? rawSource(photo.name, "", picture, properties)
                                               : bitmapSource(photo.name, "", picture, photo.size);
                const auto image = developedPhoto(source, edit, 1, *renderer, brushes, nullptr);
                ASSERT_TRUE(image);
                const std::string what = photo.name + std::string(raw ? " as RAW" : "");
                expectNumbers(*renderer,
                              Pipeline::gamutMapped(straightenedAndCropped(*image, edit),
                                                    Pipeline::OutputSpace::sRGB),
                              what);
            }
}

// Decoders turn what is no number into 0; but where such pixels come all the same, everything ends.
TEST(Degenerate, PixelsThatAreNoNumbersStopNothing) {
    const auto renderer = makeTiledRenderer(1);
    BrushRaster brushes;
    const PixelSize size{33, 5};
    for (const float value : {NAN, INFINITY, -INFINITY}) {
        const Image picture = test::imageOf(size, [&](int x, int) {
            return x % 2 ? test::Pixel{value, value, value, 1} : test::Pixel{0.5f, 0.4f, value, 1};
        });
        RawProperties properties;
        properties.size = size;
        for (const ImageSource& source :
             {bitmapSource("a", "", picture, size), rawSource("a", "", picture, properties)})
            for (const Adjustments& edit : {test::everything(), strongest(1), strongest(-1)}) {
                const auto image = developedPhoto(source, edit, 1, *renderer, brushes, nullptr);
                ASSERT_TRUE(image);
                EXPECT_TRUE(renderer->renderBitmap(
                    Pipeline::gamutMapped(*image, Pipeline::OutputSpace::sRGB), image->extent(),
                    Pipeline::bitmapFormat(Pipeline::OutputSpace::sRGB, SampleType::u8)));
            }
    }
}

TEST(Degenerate, MasksOfAnyShapeGiveWeightsBetweenNothingAndAll) {
    const auto renderer = makeReferenceRenderer();
    BrushRaster brushes;
    const auto shape = [](MaskComponent::Kind kind, MaskPoint start, MaskPoint end) {
        MaskComponent component;
        component.kind = kind;
        component.start = start;
        component.end = end;
        return component;
    };
    using Kind = MaskComponent::Kind;
    std::vector<MaskComponent> shapes{
        shape(Kind::linear, {0.5, 0.5}, {0.5, 0.5}), // coinciding points
        shape(Kind::linear, {-4, 5}, {5, -4}),
        shape(Kind::radial, {0.5, 0.5}, {0.001, 0.001}),
        shape(Kind::radial, {0.5, 0.5}, {5, 0.001}),
        shape(Kind::radial, {0.5, 0.5}, {0, 0}),
        shape(Kind::radial, {1e6, -1e6}, {1e9, 1e9}),
        shape(Kind::linear, {-1e9, 1e9}, {1e9, -1e9}),
        shape(Kind::brush, {}, {}), // no strokes
        test::brush({{0.3, 0.3}, {0.3, 0.3}, {0.3, 0.3}}),
    };
    shapes[2].feather = 0;
    shapes.push_back(test::brush({{-3, 0.2}, {4, 0.2}}));
    shapes.back().strokes.assign(20, shapes.back().strokes.front()); // huge, and far outside
    for (BrushStroke& stroke : shapes.back().strokes)
        stroke.radius = 1;
    for (MaskComponent component : shapes)
        for (const bool invert : {false, true})
            for (const PixelRect photo : {PixelRect{0, 0, 1, 1}, PixelRect{0, 0, 30, 20}}) {
                component.invert = invert;
                LocalMask mask;
                mask.components = {component, component, component};
                mask.components[1].mode = MaskComponent::Mode::subtract;
                mask.components[2].mode = MaskComponent::Mode::intersect;
                const Raster weights = test::drawn(*renderer, maskWeight(mask, photo, brushes));
                for (int y = 0; y < photo.height; ++y)
                    for (int x = 0; x < photo.width; ++x) {
                        const float w = test::pixelAt(weights, x, y)[0];
                        ASSERT_TRUE(w >= 0 && w <= 1) << w;
                    }
            }
}

TEST(Degenerate, HundredsOfMasksAreAppliedInTheirOrder) {
    const auto renderer = makeTiledRenderer(1);
    BrushRaster brushes;
    Adjustments edit;
    for (int i = 0; i < 300; ++i) {
        LocalMask mask = test::everyShapeMask();
        for (MaskComponent& component : mask.components)
            component.id.bytes[1] = std::uint8_t(i % 3);
        edit.masks.push_back(std::move(mask));
    }
    const PixelSize size{20, 14};
    const ImageSource source = bitmapSource("a", "", test::testPicture(size, 1), size);
    const auto image = developedPhoto(source, edit, 1, *renderer, brushes, nullptr);
    ASSERT_TRUE(image);
    expectNumbers(*renderer, *image, "three hundred masks");
}

} // namespace
} // namespace kelvaro
