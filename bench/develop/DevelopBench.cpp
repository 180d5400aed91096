// Speed and memory of whole developments: photos and screen frames, the analysis of a photo, what
// pixels and masks cost, and painting with a brush. The argument is the number of threads; "peak
// MiB" is the most memory that the process held during a row, its sources included.
#include "bench/Photos.h"
#include "develop/BrushRaster.h"
#include "develop/CropGeometry.h"
#include "develop/Guides.h"
#include "develop/Recipes.h"
#include "develop/ToneAnalysis.h"
#include "platform/imaging/TiledRenderer.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <fstream>
#include <string>

namespace kelvaro {
namespace {

using bench::k24MP;
using test::brush;
using test::shape;
using Kind = MaskComponent::Kind;

void forgetPeakMemory() {
    std::ofstream("/proc/self/clear_refs") << 5;
}

double peakMemoryMiB() {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word)
        if (word == "VmHWM:") {
            double kibibytes = 0;
            status >> kibibytes;
            return kibibytes / 1024;
        }
    return 0;
}

enum class Photo { bitmap, raw };

// A RAW photo's capture is a float raster; here it is the bitmap's light.
ImageSource made(Photo kind, PixelSize size) {
    const Image image = bench::photo(size);
    if (kind == Photo::bitmap) return bitmapSource("bench.jpg", "", image, size);
    RawProperties properties;
    properties.size = size;
    return rawSource("bench.nef", "", *materialised(image, *makeTiledRenderer(), nullptr),
                     properties);
}

const ImageSource& photo24MP(Photo kind) {
    static const ImageSource bitmap = made(Photo::bitmap, k24MP);
    static const ImageSource raw = made(Photo::raw, k24MP);
    return kind == Photo::raw ? raw : bitmap;
}

// Exposure, white balance, tone, vibrance and clarity.
Adjustments typical() {
    Adjustments edit = test::typical();
    edit.temperature = 8;
    edit.tint = 3;
    edit.white = 10;
    edit.black = -10;
    return edit;
}

LocalMask lit(MaskComponent component) {
    LocalMask mask;
    mask.exposure = 0.5;
    mask.shadows = 20;
    mask.components = {std::move(component)};
    return mask;
}

std::vector<MaskPoint> longPath() {
    std::vector<MaskPoint> points;
    for (int i = 0; i < 2000; ++i)
        points.push_back({0.5 + 0.4 * std::sin(i * 0.01), 0.33 + 0.3 * std::cos(i * 0.013)});
    return points;
}

// All sliders, three masks with a long brush, dehaze, vignette and grain.
Adjustments everything() {
    Adjustments edit = test::everything();
    edit.blackAndWhite = 0;
    edit.cropLeft = edit.straighten = 0;
    edit.masks = {lit(shape(Kind::linear, {0.3, 0.3}, {0.6, 0.5})),
                  lit(shape(Kind::radial, {0.5, 0.3}, {0.3, 0.2})), lit(brush(longPath()))};
    return edit;
}

// Pixels from a source at hand to 8 bits, gamut stage included; the analysis is measured before.
void develop(benchmark::State& state, const ImageSource& source, const Adjustments& edit,
             double scale = 1) {
    const auto renderer = makeTiledRenderer(int(state.range(0)));
    BrushRaster brushes;
    ImageSource shown = source;
    if (scale < 1) // the reduced photo is at hand while a person edits
        shown = withPixels(source, *materialised(atRenderScale(source.decoded(), source, scale),
                                                 *renderer, nullptr));
    static_cast<void>(toneMaps(shown, edit, *renderer, nullptr));
    forgetPeakMemory();
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
    state.counters["peak MiB"] = peakMemoryMiB();
}

void photo(benchmark::State& state, Photo kind, const Adjustments& edit) {
    develop(state, photo24MP(kind), edit);
}

// A photo of 3:2 on a canvas of that height.
void frame(benchmark::State& state, const Adjustments& edit, int height) {
    develop(state, photo24MP(Photo::raw), edit, double(height) / k24MP.height);
}

// A finishing control moves: the RAW stage is at hand.
void finishingFrame(benchmark::State& state, const Adjustments& edit, int height) {
    const auto renderer = makeTiledRenderer(int(state.range(0)));
    BrushRaster brushes;
    const ImageSource& source = photo24MP(Photo::raw);
    const double scale = double(height) / k24MP.height;
    const auto maps = toneMaps(source, edit, *renderer, nullptr);
    const Image stage =
        *materialised(Pipeline::rawDeveloped(atRenderScale(source.decoded(), source, scale), {},
                                             source.asShot(), edit, *maps),
                      *renderer, nullptr);
    for (auto _ : state) {
        const Image image = Pipeline::gamutMapped(
            Pipeline(*renderer, brushes).finished(stage, edit, &*maps, true, scale),
            Pipeline::OutputSpace::sRGB);
        benchmark::DoNotOptimize(renderer->renderBitmap(image, image.extent(), {}));
    }
}

void bySize(benchmark::State& state, Photo kind, PixelSize size) {
    develop(state, made(kind, size), everything());
}

void withMask(benchmark::State& state, MaskPoint centre, double radius) {
    Adjustments edit;
    edit.masks = {lit(shape(Kind::radial, centre, {radius, radius}))};
    photo(state, Photo::bitmap, edit);
}

void analysis(benchmark::State& state, Photo kind, const Adjustments& edit) {
    const auto renderer = makeTiledRenderer(int(state.range(0)));
    const ImageSource& source = photo24MP(kind);
    for (auto _ : state) {
        ImageSource fresh = source;
        fresh.analysis = std::make_shared<PhotoAnalysis>("", source.isRaw(), "");
        fresh.rawToneAnalysis = std::make_shared<RawToneAnalysis>("", "");
        benchmark::DoNotOptimize(toneMaps(fresh, edit, *renderer, nullptr));
    }
}

// One pointer movement of a soft brush of a tenth of the photo: the raster grows by a few dabs.
void brushGrows(benchmark::State& state) {
    BrushRaster brushes;
    MaskComponent growing = brush({{0.2, 0.2}, {0.7, 0.4}});
    double u = 0;
    for (auto _ : state) {
        u += 0.01;
        growing.strokes.front().points.push_back(
            {0.5 + 0.4 * std::sin(u), 0.3 + 0.3 * std::cos(u)});
        benchmark::DoNotOptimize(brushes.image(growing, brushRasterSize(k24MP)));
    }
}

template<class Function, class... Arguments>
void addRow(const char* name, Function function, Arguments... arguments) {
    benchmark::RegisterBenchmark(name,
                                 [=](benchmark::State& state) { function(state, arguments...); })
        ->Arg(1)
        ->Arg(2)
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

void addRows() {
    const Adjustments none, some = typical(), all = everything();
    addRow("bitmap/unedited", photo, Photo::bitmap, none);
    addRow("bitmap/typical", photo, Photo::bitmap, some);
    addRow("bitmap/everything", photo, Photo::bitmap, all);
    addRow("raw/typical", photo, Photo::raw, some);
    addRow("raw/everything", photo, Photo::raw, all);
    addRow("frame1920x1200/typical", frame, some, 1200);
    addRow("frame1920x1200/everything", frame, all, 1200);
    addRow("frame1920x1200/finishing", finishingFrame, some, 1200);
    addRow("frame3840x2160/typical", frame, some, 2160);
    addRow("frame3840x2160/everything", frame, all, 2160);
    addRow("analysis/bitmap/typical", analysis, Photo::bitmap, some);
    addRow("analysis/bitmap/everything", analysis, Photo::bitmap, all);
    addRow("analysis/raw/typical", analysis, Photo::raw, some);
    addRow("analysis/raw/everything", analysis, Photo::raw, all);
    addRow("size/6MP", bySize, Photo::bitmap, PixelSize{3000, 2000});
    addRow("size/24MP", bySize, Photo::bitmap, k24MP);
    addRow("size/100MP", bySize, Photo::bitmap, PixelSize{12240, 8160});
    addRow("size/100MP-raw", bySize, Photo::raw, PixelSize{12240, 8160});
    addRow("mask/small-left", withMask, MaskPoint{0.15, 0.15}, 0.1);
    addRow("mask/small-right", withMask, MaskPoint{0.8, 0.45}, 0.1);
    addRow("mask/large", withMask, MaskPoint{0.5, 0.33}, 0.3);
    benchmark::RegisterBenchmark("brushGrows", brushGrows)->Unit(benchmark::kMillisecond);
}

} // namespace
} // namespace kelvaro

int main(int argc, char** argv) {
    kelvaro::addRows();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
}
