// Speed of whole developments: a 24 MP photo and screen frames under a typical and a full recipe,
// the analysis of a photo, and painting with a brush. The argument is the number of threads.
#include "develop/BrushRaster.h"
#include "develop/CropGeometry.h"
#include "develop/ToneAnalysis.h"
#include "platform/imaging/TiledRenderer.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace kelvaro {
namespace {

constexpr PixelSize kSize{6000, 4000};

// An 8-bit sRGB picture of soft shapes and fine texture, as a camera file decodes.
Image photo() {
    static const Image image = [] {
        auto table = std::make_shared<std::vector<float>>(256);
        for (int i = 0; i < 256; ++i) {
            const double v = i / 255.0;
            (*table)[std::size_t(i)] =
                float(v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4));
        }
        Bitmap bitmap(kSize, 3, SampleType::u8);
        for (int y = 0; y < kSize.height; ++y)
            for (int x = 0; x < 3 * kSize.width; ++x)
                bitmap.row<std::uint8_t>(y)[x] =
                    std::uint8_t(120 + 100 * std::sin(x / 900.0) * std::cos(y / 700.0) +
                                 (x * 7919 ^ y * 104729) % 23);
        return imageFrom(sourceFrom(std::move(bitmap), {{table, table, table}}));
    }();
    return image;
}

ImageSource bitmap() {
    return bitmapSource("bench.jpg", "", photo(), kSize);
}
ImageSource raw() {
    RawProperties properties;
    properties.size = kSize;
    return rawSource("bench.nef", "", photo(), properties);
}

Adjustments typical() {
    Adjustments edit;
    edit.contrast = 20;
    edit.highlights = -30;
    edit.shadows = 30;
    edit.clarity = 15;
    edit.vibrance = 20;
    return edit;
}

LocalMask mask(MaskComponent::Kind kind) {
    LocalMask mask;
    mask.exposure = 0.5;
    mask.shadows = 20;
    MaskComponent shape;
    shape.kind = kind;
    shape.start = {0.3, 0.3};
    shape.end = {0.6, 0.5};
    shape.strokes.push_back({{{0.2, 0.2}, {0.7, 0.4}}, 0.1, 60, 90, false});
    mask.components = {shape};
    return mask;
}

Adjustments everything() {
    Adjustments edit = typical();
    edit.dehaze = 30;
    edit.vignette = -20;
    edit.grain = 20;
    edit.masks = {mask(MaskComponent::Kind::linear), mask(MaskComponent::Kind::brush)};
    return edit;
}

// 8 bits in and out, gamut stage included; the analysis is measured before.
void develop(benchmark::State& state, const ImageSource& source, const Adjustments& edit,
             int longerSide) {
    const auto renderer = makeTiledRenderer(int(state.range(0)));
    BrushRaster brushes;
    const double scale = double(longerSide) / kSize.width;
    ImageSource shown = source;
    if (scale < 1) { // the reduced photo is at hand while a person edits
        const Image input = atRenderScale(source.decoded(), source, scale);
        auto pixels = renderer->renderRaster(input, input.extent());
        Image& decoded = source.isRaw() ? shown.linearCapture : shown.bitmap;
        decoded = imageFrom(std::move(*pixels));
        shown.pixelScale = scale;
    }
    static_cast<void>(toneMaps(shown, edit, *renderer, nullptr));
    double pixels = 0;
    for (auto _ : state) {
        const Image image = Pipeline::gamutMapped(
            straightenedAndCropped(*developedPhoto(shown, edit, scale, *renderer, brushes, nullptr),
                                   edit),
            Pipeline::OutputSpace::sRGB);
        pixels += double(image.extent().width) * image.extent().height;
        benchmark::DoNotOptimize(renderer->renderBitmap(
            image, image.extent(),
            Pipeline::bitmapFormat(Pipeline::OutputSpace::sRGB, SampleType::u8)));
    }
    state.counters["MP/s"] = benchmark::Counter(pixels / 1e6, benchmark::Counter::kIsRate);
}

void bitmapUnedited(benchmark::State& s) {
    develop(s, bitmap(), {}, 6000);
}
void bitmapTypical(benchmark::State& s) {
    develop(s, bitmap(), typical(), 6000);
}
void bitmapEverything(benchmark::State& s) {
    develop(s, bitmap(), everything(), 6000);
}
void rawTypical(benchmark::State& s) {
    develop(s, raw(), typical(), 6000);
}
void rawEverything(benchmark::State& s) {
    develop(s, raw(), everything(), 6000);
}
void frameTypical(benchmark::State& s) {
    develop(s, raw(), typical(), 1920);
}
void frameEverything(benchmark::State& s) {
    develop(s, raw(), everything(), 1920);
}

void analysis(benchmark::State& state, const ImageSource& (*make)(), const Adjustments& edit) {
    const auto renderer = makeTiledRenderer(int(state.range(0)));
    make();
    for (auto _ : state) {
        ImageSource source = make();
        source.analysis = std::make_shared<PhotoAnalysis>("", source.isRaw(), "");
        source.rawToneAnalysis = std::make_shared<RawToneAnalysis>("", "");
        benchmark::DoNotOptimize(toneMaps(source, edit, *renderer, nullptr));
    }
}
const ImageSource& sharedBitmap() {
    static const ImageSource source = bitmap();
    return source;
}
const ImageSource& sharedRaw() {
    static const ImageSource source = raw();
    return source;
}
void bitmapAnalysisTypical(benchmark::State& s) {
    analysis(s, sharedBitmap, typical());
}
void bitmapAnalysisEverything(benchmark::State& s) {
    analysis(s, sharedBitmap, everything());
}
void rawAnalysisTypical(benchmark::State& s) {
    analysis(s, sharedRaw, typical());
}
void rawAnalysisEverything(benchmark::State& s) {
    analysis(s, sharedRaw, everything());
}

// One pointer movement of a soft brush of a tenth of the photo: the raster grows by a few dabs.
void brushGrows(benchmark::State& state) {
    BrushRaster brushes;
    MaskComponent shape = mask(MaskComponent::Kind::brush).components.front();
    double u = 0;
    for (auto _ : state) {
        u += 0.01;
        shape.strokes.front().points.push_back({0.5 + 0.4 * std::sin(u), 0.3 + 0.3 * std::cos(u)});
        benchmark::DoNotOptimize(brushes.image(shape, brushRasterSize(kSize)));
    }
}

#define KELVARO_BENCH(name)                                                                        \
    BENCHMARK(name)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime()
KELVARO_BENCH(bitmapUnedited);
KELVARO_BENCH(bitmapTypical);
KELVARO_BENCH(bitmapEverything);
KELVARO_BENCH(rawTypical);
KELVARO_BENCH(rawEverything);
KELVARO_BENCH(frameTypical);
KELVARO_BENCH(frameEverything);
KELVARO_BENCH(bitmapAnalysisTypical);
KELVARO_BENCH(bitmapAnalysisEverything);
KELVARO_BENCH(rawAnalysisTypical);
KELVARO_BENCH(rawAnalysisEverything);
BENCHMARK(brushGrows)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace kelvaro
