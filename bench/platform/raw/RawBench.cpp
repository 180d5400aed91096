// Speed of opening, unpacking and developing. KELVARO_BENCH_RAW names the file; without it the 12
// MP one of the test photos is taken. Items are pixels: the counter reads as pixels per second.
#include "places/Places.h"
#include "platform/raw/CameraRawEngine.h"
#include "platform/raw/Demosaic.h"
#include "platform/raw/Finishing.h"
#include "platform/raw/RawDecoder.h"

#include <benchmark/benchmark.h>
#include <tbb/parallel_for.h>

#include <cstdlib>
#include <filesystem>

namespace kelvaro {
namespace {

std::filesystem::path file() {
    if (const char* given = std::getenv("KELVARO_BENCH_RAW")) return given;
    return places::photos() / "raw/gopro_hero7_mural.dng";
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
                      noise, settings);
    state.SetItemsProcessed(state.iterations() * width * height);
}
BENCHMARK(finishOneCore)->Arg(0)->Arg(1)->ArgName("colour")->Unit(benchmark::kMillisecond);

} // namespace
} // namespace kelvaro

BENCHMARK_MAIN();
