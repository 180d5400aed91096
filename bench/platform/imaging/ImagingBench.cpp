// Speed of the image engine on a 24 MP picture: an 8-bit source to 8-bit output, resampling, maps
// that are stretched over the photo, and rotation; one and two threads.
#include "bench/Photos.h"
#include "platform/imaging/TiledRenderer.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace kelvaro {
namespace {

constexpr double kPixels = 24e6;

const Image& photo() {
    static const Image image = bench::photo(bench::k24MP);
    return image;
}

void render(benchmark::State& state, const Image& image) {
    const auto renderer = makeTiledRenderer(int(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(renderer->renderBitmap(image, image.extent(), {}));
    state.counters["MP/s"] =
        benchmark::Counter(kPixels / 1e6 * double(state.iterations()), benchmark::Counter::kIsRate);
}

void unedited(benchmark::State& state) {
    render(state, photo());
}
void exposure(benchmark::State& state) {
    render(state, exposureAdjusted(photo(), 0.5));
}
void lanczosTo3000(benchmark::State& state) {
    render(state, lanczosScaled(photo(), 0.5));
}
void lanczosTo512(benchmark::State& state) {
    render(state, lanczosScaled(photo(), 512.0 / 6000));
}
void straighten(benchmark::State& state) {
    const double c = std::cos(0.05), s = std::sin(0.05);
    render(state,
           affine(photo(), {c, s, -s, c, 100, -140}, photo().extent(), Sampling::catmullRom));
}
void stretchedMap(benchmark::State& state) {
    auto made =
        makeTiledRenderer()->renderRaster(lanczosScaled(photo(), 512.0 / 6000), {0, 0, 512, 341});
    render(state, stretched(imageFrom(std::move(made).value()), photo().extent()));
}

#define KELVARO_BENCH(name)                                                                        \
    BENCHMARK(name)->Arg(1)->Arg(2)->ArgName("threads")->UseRealTime()->Unit(                      \
        benchmark::kMillisecond)
KELVARO_BENCH(unedited);
KELVARO_BENCH(exposure);
KELVARO_BENCH(lanczosTo3000);
KELVARO_BENCH(lanczosTo512);
KELVARO_BENCH(straighten);
KELVARO_BENCH(stretchedMap);

} // namespace
} // namespace kelvaro
