// Speed of opening, unpacking and developing, and the demosaic beside LibRaw's own methods.
// KELVARO_BENCH_RAW names the file; without it the 12 MP one of the test photos is taken. Items are
// pixels: the counter reads as pixels per second. Aims, where a row states one, are for two cores
// and grow with the pixels from a file of 24 MP.
#include "places/Places.h"
#include "platform/raw/CameraRawEngine.h"
#include "platform/raw/Demosaic.h"
#include "platform/raw/Finishing.h"
#include "platform/raw/RawDecoder.h"

#include <benchmark/benchmark.h>
#include <libraw/libraw.h>
#include <tbb/enumerable_thread_specific.h>
#include <tbb/parallel_for.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace kelvaro {
namespace {

std::filesystem::path file() {
    if (const char* given = std::getenv("KELVARO_BENCH_RAW")) return given;
    return places::photos() / "raw/gopro_hero7_mural.dng";
}

// What a picture of this size may take, given what 24 MP may.
void setAim(benchmark::State& state, double milliseconds, double pixels) {
    state.SetLabel("aim " + std::to_string(int(milliseconds * pixels / 24e6 + 0.5)) + " ms");
}

void openAndPreview(benchmark::State& state) {
    CameraRawEngine engine;
    for (auto _ : state) {
        auto raw = engine.open(file());
        if (!raw) return state.SkipWithError(raw.error().message.c_str());
        benchmark::DoNotOptimize((*raw)->preview());
    }
}
BENCHMARK(openAndPreview)->Unit(benchmark::kMillisecond);

void unpack(benchmark::State& state) {
    std::int64_t pixels = 0;
    for (auto _ : state) {
        auto decoder = RawDecoder::open(file());
        if (!decoder) return state.SkipWithError(decoder.error().message.c_str());
        const auto sensor = (*decoder)->samples(1, nullptr);
        if (!sensor) return state.SkipWithError(sensor.error().message.c_str());
        pixels += std::int64_t(sensor->width) * sensor->height;
    }
    state.SetItemsProcessed(pixels);
    setAim(state, 142, double(pixels) / double(state.iterations()));
}
BENCHMARK(unpack)->Unit(benchmark::kMillisecond)->UseRealTime();

// Arguments: reduction, capture only. The file is unpacked once before.
void developUnpacked(benchmark::State& state) {
    CameraRawEngine engine;
    auto raw = engine.open(file());
    if (!raw) return state.SkipWithError(raw.error().message.c_str());
    const RawDevelopSettings settings{0, state.range(1) != 0, int(state.range(0))};
    if (!(*raw)->develop(settings, nullptr)) return state.SkipWithError("cannot be developed");
    const PixelSize size = (*raw)->properties().size;
    for (auto _ : state)
        benchmark::DoNotOptimize((*raw)->develop(settings, nullptr));
    state.SetItemsProcessed(state.iterations() * std::int64_t(size.width) * size.height);
}
BENCHMARK(developUnpacked)
    ->ArgsProduct({{1, 2}, {0, 1}})
    ->ArgNames({"reduction", "captureOnly"})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// The same read once from top to bottom as an export reads it, in strips that are thrown away.
void developStreamed(benchmark::State& state) {
    CameraRawEngine engine;
    auto raw = engine.open(file());
    if (!raw) return state.SkipWithError(raw.error().message.c_str());
    RawDevelopSettings settings;
    settings.captureOnly = state.range(0) != 0;
    settings.streamed = true;
    if (!(*raw)->develop(settings, nullptr)) return state.SkipWithError("cannot be developed");
    constexpr int kStrip = 128, kPiece = 512;
    std::int64_t pixels = 0;
    for (auto _ : state) {
        const auto source = *(*raw)->develop(settings, nullptr);
        const PixelRect whole = source->extent();
        for (int y = whole.height; y > 0; y -= kStrip) {
            const PixelRect strip = intersection(whole, {0, y - kStrip, whole.width, kStrip});
            tbb::parallel_for(0, (whole.width + kPiece - 1) / kPiece, [&](int i) {
                Raster part(intersection(strip, {i * kPiece, strip.y, kPiece, kStrip}), false);
                source->read(part.view());
                benchmark::DoNotOptimize(part.row(0, 0));
            });
        }
        pixels += std::int64_t(whole.width) * whole.height;
    }
    state.SetItemsProcessed(pixels);
    if (settings.captureOnly) setAim(state, 120, double(pixels) / double(state.iterations()));
}
BENCHMARK(developStreamed)
    ->Arg(0)
    ->Arg(1)
    ->ArgName("captureOnly")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

class Noise final : public SplitRows {
public:
    Noise() : values_(1 << 16) {
        for (std::size_t i = 0; i < values_.size(); ++i)
            values_[i] = float(i * 2654435761u % 65536) / 65536;
    }
    void split(int row, int, int pairs, float* even, float* odd) const override {
        const float* from = values_.data() + ((row & 63) * 640);
        std::copy_n(from, pairs, even);
        std::copy_n(from + 320, pairs, odd);
    }

private:
    std::vector<float> values_;
};

void demosaicOneCore(benchmark::State& state) {
    const Noise noise;
    BayerDemosaic demosaic;
    constexpr int width = BayerDemosaic::kMaximumWidth, height = 160;
    std::vector<float> planes[3];
    for (auto& plane : planes)
        plane.resize(std::size_t(width) * height);
    for (auto _ : state) {
        demosaic.run(noise, {0, 0}, {0, 0, width, height}, kLeastToe,
                     {planes[0].data(), planes[1].data(), planes[2].data()}, width);
        benchmark::DoNotOptimize(planes[0].data());
    }
    state.SetItemsProcessed(state.iterations() * width * height);
}
BENCHMARK(demosaicOneCore)->Unit(benchmark::kMillisecond);

// A whole picture in memory, in tiles on all cores.
void demosaicAllCores(benchmark::State& state) {
    const Noise noise;
    constexpr int width = BayerDemosaic::kMaximumWidth, height = 160, tiles = 294;
    struct Bench {
        BayerDemosaic demosaic;
        std::vector<float> planes[3];
        Bench() {
            for (auto& plane : planes)
                plane.resize(std::size_t(width) * height);
        }
    };
    tbb::enumerable_thread_specific<Bench> benches;
    for (auto _ : state) {
        tbb::parallel_for(0, tiles, [&](int) {
            Bench& b = benches.local();
            b.demosaic.run(noise, {0, 0}, {0, 0, width, height}, kLeastToe,
                           {b.planes[0].data(), b.planes[1].data(), b.planes[2].data()}, width);
        });
    }
    state.SetItemsProcessed(state.iterations() * width * height * tiles);
    setAim(state, 39, double(width) * height * tiles);
}
BENCHMARK(demosaicAllCores)->Unit(benchmark::kMillisecond)->UseRealTime();

// Seconds that LibRaw takes from unpacked samples to its picture.
double libRawSeconds(int quality, bool interpolates, std::int64_t& pixels) {
    LibRaw library;
    library.imgdata.params.user_qual = quality;
    library.imgdata.params.no_interpolation = interpolates ? 0 : 1;
    library.imgdata.params.output_color = 0;
    library.imgdata.params.no_auto_bright = 1;
    if (library.open_file(file().c_str()) != LIBRAW_SUCCESS || library.unpack() != LIBRAW_SUCCESS)
        return 0;
    pixels = std::int64_t(library.imgdata.sizes.width) * library.imgdata.sizes.height;
    const auto begin = std::chrono::steady_clock::now();
    library.dcraw_process();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// Its demosaic alone: a development with it less one without. The argument is LibRaw's number of
// the method.
void demosaicOfLibRaw(benchmark::State& state) {
    std::int64_t pixels = 0;
    for (auto _ : state) {
        const double rest = libRawSeconds(int(state.range(0)), false, pixels);
        state.SetIterationTime(
            std::max(1e-6, libRawSeconds(int(state.range(0)), true, pixels) - rest));
    }
    state.SetItemsProcessed(state.iterations() * pixels);
    state.SetLabel(state.range(0) == 0   ? "linear"
                   : state.range(0) == 2 ? "PPG"
                   : state.range(0) == 3 ? "AHD"
                                         : "DHT");
}
BENCHMARK(demosaicOfLibRaw)
    ->Arg(0)
    ->Arg(2)
    ->Arg(3)
    ->Arg(11)
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime();

// Argument: with colour noise reduction, or sharpening alone.
void finishOneCore(benchmark::State& state) {
    constexpr int width = BayerDemosaic::kMaximumWidth, height = 160;
    std::vector<float> planes[3];
    for (auto& plane : planes) {
        plane.resize(std::size_t(width) * height);
        for (std::size_t i = 0; i < plane.size(); ++i)
            plane[i] = 0.2f + float(i * 2654435761u % 65536) / 655360;
    }
    FinishingSettings settings;
    settings.sharpening = 1;
    settings.reducesColourNoise = state.range(0) != 0;
    const NoiseModel noise;
    Finishing finishing;
    for (auto _ : state)
        finishing.run({planes[0].data(), planes[1].data(), planes[2].data()}, width, width, height,
                      noise, settings,
                      {{planes[0].data(), planes[1].data(), planes[2].data()}, width});
    state.SetItemsProcessed(state.iterations() * width * height);
}
BENCHMARK(finishOneCore)->Arg(0)->Arg(1)->ArgName("colour")->Unit(benchmark::kMillisecond);

} // namespace
} // namespace kelvaro

BENCHMARK_MAIN();
