// Speed of the image engine on a 24 MP picture: an 8-bit source to 8-bit output, resampling, maps
// that are stretched over the photo, and rotation; one and two threads.
#include "platform/Image.h"
#include "platform/imaging/TiledRenderer.h"

#include <benchmark/benchmark.h>

#include <cmath>

namespace kelvaro {
namespace {

constexpr PixelSize kSize{6000, 4000};
constexpr double kPixels = 24e6;

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
                    std::uint8_t((x / 40 + y / 30 + (x * 7919 ^ y * 104729) % 23) & 0xff);
        return imageFrom(sourceFrom(std::move(bitmap), {{table, table, table}}));
    }();
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
