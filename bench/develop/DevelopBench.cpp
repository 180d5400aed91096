// Speed and memory of whole developments: photos and screen frames, the analysis of a photo, what
// pixels and masks cost, painting with a brush, and vectors beside one float at a time. The
// argument is the number of threads; "peak MiB" is the most memory that the process held during a
// row, and "beside MiB" what of it was neither there before, as the source is, nor the output. A
// table with the aims follows at the end.
#include "bench/Photos.h"
#include "bench/develop/Aims.h"
#include "develop/BrushRaster.h"
#include "develop/CropGeometry.h"
#include "develop/Guides.h"
#include "develop/Recipes.h"
#include "develop/ScalarForm.h"
#include "develop/ToneAnalysis.h"
#include "platform/FreeMemory.h"
#include "platform/imaging/TiledRenderer.h"

#include <benchmark/benchmark.h>
#include <hwy/highway.h>

#include <cmath>
#include <fstream>
#include <string>

namespace kelvaro {
namespace {

using bench::k24MP;
using test::brush;
using test::shape;
using Kind = MaskComponent::Kind;

// Of this process, from the system's own table: "VmRSS:" what it holds, "VmHWM:" the most it held.
double memoryMiB(const std::string& row) {
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word)
        if (word == row) {
            double kibibytes = 0;
            status >> kibibytes;
            return kibibytes / 1024;
        }
    return 0;
}

// What a row holds from here on.
class MemoryWatch {
public:
    MemoryWatch() {
        returnFreeMemory();
        std::ofstream("/proc/self/clear_refs") << 5; // forgets the peak
        before_ = memoryMiB("VmRSS:");
    }
    void report(benchmark::State& state, double outputBytes) const {
        const double peak = memoryMiB("VmHWM:");
        state.counters["peak MiB"] = peak;
        state.counters["beside MiB"] = std::max(0.0, peak - before_ - outputBytes / (1 << 20));
    }

private:
    double before_ = 0;
};

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
    if (kind == Photo::bitmap) {
        static const ImageSource bitmap = made(Photo::bitmap, k24MP);
        return bitmap;
    }
    static const ImageSource raw = made(Photo::raw, k24MP);
    return raw;
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

Image shownImage(const ImageSource& source, const Adjustments& edit, double scale,
                 Renderer& renderer, BrushRaster& brushes) {
    const auto developed = developedPhoto(source, edit, scale, renderer, brushes, nullptr);
    return Pipeline::gamutMapped(straightenedAndCropped(*developed, edit),
                                 Pipeline::OutputSpace::sRGB);
}

Bitmap drawn(const Image& image, Renderer& renderer) {
    return *renderer.renderBitmap(
        image, image.extent(), Pipeline::bitmapFormat(Pipeline::OutputSpace::sRGB, SampleType::u8));
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
    if (scale < 1) static_cast<void>(shownImage(shown, edit, scale, *renderer, brushes)); // paints
    const MemoryWatch memory;
    double pixels = 0, bytes = 0;
    for (auto _ : state) {
        const Bitmap bitmap = drawn(shownImage(shown, edit, scale, *renderer, brushes), *renderer);
        benchmark::DoNotOptimize(bitmap.samples.get());
        pixels += double(bitmap.size.width) * bitmap.size.height;
        bytes = double(bitmap.bytes());
    }
    state.counters["MP/s"] = benchmark::Counter(pixels / 1e6, benchmark::Counter::kIsRate);
    memory.report(state, bytes);
}

// The same on one core with a chosen instruction set, or (0) one float at a time.
void withVectors(benchmark::State& state, std::int64_t target, const Adjustments& edit) {
    static const ImageSource source = made(Photo::bitmap, {1500, 1000});
    const auto renderer = makeTiledRenderer(1);
    BrushRaster brushes;
    test::ScalarForm scalar;
    Image image = shownImage(source, edit, 1, *renderer, brushes);
    if (target == 0) image = scalar.of(image);
    const auto choose = [](std::int64_t targets) {
        hwy::SetSupportedTargetsForTest(targets);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    };
    choose(target);
    for (auto _ : state)
        benchmark::DoNotOptimize(drawn(image, *renderer));
    choose(0);
    state.counters["MP/s"] = benchmark::Counter(1.5, benchmark::Counter::kIsIterationInvariantRate);
}

// As an export reduces: 24 MP to 3,000 pixels.
void lanczos(benchmark::State& state) {
    const auto renderer = makeTiledRenderer(int(state.range(0)));
    const Image reduced = reducedToLongEdge(photo24MP(Photo::bitmap).bitmap, 3000);
    for (auto _ : state)
        benchmark::DoNotOptimize(drawn(reduced, *renderer));
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
benchmark::internal::Benchmark* addRow(const std::string& name, Function function,
                                       Arguments... arguments) {
    return benchmark::RegisterBenchmark(
               name.c_str(), [=](benchmark::State& state) { function(state, arguments...); })
        ->Unit(benchmark::kMillisecond)
        ->UseRealTime();
}

template<class Function, class... Arguments>
void addThreadRows(const char* name, Function function, Arguments... arguments) {
    addRow(name, function, arguments...)->Arg(1)->Arg(2);
}

void addRows() {
    const Adjustments none, some = typical(), all = everything();
    Adjustments straightened;
    straightened.straighten = 3;
    addThreadRows("bitmap/unedited", photo, Photo::bitmap, none);
    addThreadRows("bitmap/typical", photo, Photo::bitmap, some);
    addThreadRows("bitmap/everything", photo, Photo::bitmap, all);
    addThreadRows("bitmap/straightened", photo, Photo::bitmap, straightened);
    addThreadRows("bitmap/lanczos-3000", lanczos);
    addThreadRows("analysis/bitmap/typical", analysis, Photo::bitmap, some);
    addThreadRows("analysis/bitmap/everything", analysis, Photo::bitmap, all);
    addThreadRows("mask/small-left", withMask, MaskPoint{0.15, 0.15}, 0.1);
    addThreadRows("mask/small-right", withMask, MaskPoint{0.8, 0.45}, 0.1);
    addThreadRows("mask/large", withMask, MaskPoint{0.5, 0.33}, 0.3);
    addThreadRows("raw/typical", photo, Photo::raw, some);
    addThreadRows("raw/everything", photo, Photo::raw, all);
    addThreadRows("analysis/raw/typical", analysis, Photo::raw, some);
    addThreadRows("analysis/raw/everything", analysis, Photo::raw, all);
    addThreadRows("frame1920x1200/typical", frame, some, 1200);
    addThreadRows("frame1920x1200/everything", frame, all, 1200);
    addThreadRows("frame1920x1200/finishing", finishingFrame, some, 1200);
    addThreadRows("frame3840x2160/typical", frame, some, 2160);
    addThreadRows("frame3840x2160/everything", frame, all, 2160);
    addThreadRows("frame3840x2160/drag-typical", frame, some, 1080);
    addThreadRows("frame3840x2160/drag-everything", frame, all, 1080);
    addThreadRows("size/6MP", bySize, Photo::bitmap, PixelSize{3000, 2000});
    addThreadRows("size/24MP", bySize, Photo::bitmap, k24MP);
    addThreadRows("size/100MP", bySize, Photo::bitmap, PixelSize{12240, 8160});
    addThreadRows("size/100MP-raw", bySize, Photo::raw, PixelSize{12240, 8160});
    for (const auto& [recipe, edit] : {std::pair{"typical/", some}, {"everything/", all}}) {
        for (const std::int64_t target : hwy::SupportedAndGeneratedTargets())
            addRow(std::string(recipe) + hwy::TargetName(target), withVectors, target, edit);
        addRow(std::string(recipe) + "scalar", withVectors, std::int64_t(0), edit);
    }
    addRow("brushGrows", brushGrows);
}

// MP/s as rates, the others in milliseconds. The 3840 × 2160 frames are drawn at half scale while
// a slider is dragged; whole ones and the analysis have the prototype's figures.
std::map<std::string, bench::Aim> aims() {
    return {{"bitmap/unedited", {700, true}},        {"bitmap/typical", {150, true}},
            {"bitmap/everything", {65, true}},       {"bitmap/lanczos-3000", {50}},
            {"analysis/raw/typical", {9}},           {"frame1920x1200/typical", {15}},
            {"frame1920x1200/everything", {35}},     {"frame3840x2160/typical", {50}},
            {"frame3840x2160/everything", {126}},    {"frame3840x2160/drag-typical", {13}},
            {"frame3840x2160/drag-everything", {32}}};
}

} // namespace
} // namespace kelvaro

int main(int argc, char** argv) {
    kelvaro::addRows();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    kelvaro::bench::TableReporter table(kelvaro::aims());
    benchmark::RunSpecifiedBenchmarks(&table);
}
