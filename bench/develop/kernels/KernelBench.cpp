// Every kernel on one core: vectors beside one float at a time, in pixels per second. The row is a
// smooth picture with a little noise in which a fifth of the places leaves sRGB.
#include "develop/kernels/Kernels.h"
#include "platform/Raster.h"

#include <benchmark/benchmark.h>
#include <hwy/aligned_allocator.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace kelvaro {
namespace {

constexpr std::size_t kPixels = 2048; // stays in the first and second level cache

struct Case {
    const Kernel& kernel;
    std::vector<double> uniforms;
};

std::vector<Case> cases() {
    using namespace kernel;
    const std::vector<double> p3 = {0.8224621, 0.1775380, 0,         0.0331941, 0.9668058,
                                    0,         0.0170827, 0.0723974, 0.9105199};
    return {{bitmapToScene(), {}},
            {sceneToBitmap(), {}},
            {bitmapRelit(), {1.2, 1.1, 0.02, 0, 0.01, 1, 0, 0, 0.05, 0.8}},
            {rawColour(), {}},
            {twLogLuma(), {}},
            {twGuideAB(), {0.12}},
            {rawLogNorm(), {}},
            {rawGuide(), {0.06}},
            {rawApplyAB(), {}},
            {rawMidDetail(), {}},
            {rawGain(), {0.6, -0.4, 0}},
            {sceneTone(), {0.4, 0.2, -0.3, -6, 2.5, 3, 2}},
            {rawTone(), {0.6, -0.4, 0, 0.4, 0.2, -0.3, -6, 2.5, 3, 2}},
            {bitmapTone(), {0.3, -0.3, 0.2, 0.2, 0.1, -0.1, -6, 2.5, 3, 2}},
            {twColour(), {0, 0, 0.2}},
            {twColour(), {0.1, 0.2, 0.3}},
            {twMono(), {}},
            {twGamut(), {}},
            {twOutputGamut(), {1, 0, 0, 0, 1, 0, 0, 0, 1}},
            {twOutputGamut(), p3},
            {displayGamut(), p3},
            {sceneHaze(), {0.5, 0.8, 0.85, 0.9}},
            {kelvaroTone(), {0, 0.4, 1, 0}},
            {twVignette(), {1024, 700, 0, 0, 1024, 700, 1, 0, -0.5}},
            {kelvaroGrain(), {0.4, 1.2, 1, 0.24, 0.94, 0.24}},
            {twMaskLinear(), {100, 0, 1800, 900, 0}},
            {twMaskRadial(), {1000, 500, 800, 600, 0.8, 0.6, 0.5, 0}},
            {twMaskCombine(), {1}},
            {twMaskFinish(), {0, 0.8}},
            {twLocal(), {0.5, 0.2, 0.1, 0.3, -0.4, 0.4, 0.3, 0.2}},
            {twMaskOverlay(), {}},
            {twClipping(), {}},
            {rawRendering(), {}}};
}

// Planes for four inputs and the output.
class Picture {
public:
    Picture() : values_(hwy::AllocateAligned<float>(kPixels * 19)) {
        std::mt19937 random(7);
        std::normal_distribution<float> noise(0, 0.01f);
        for (std::size_t i = 0; i < kPixels; i++) {
            const auto t = static_cast<float>(i);
            const float light = 0.35f + 0.3f * std::sin(t * 0.004f);
            const float chroma = 0.5f * std::abs(std::sin(t * 0.0023f));
            for (std::size_t c = 0; c < 3; c++) {
                const float wave = std::sin(t * 0.0031f + 2.1f * static_cast<float>(c));
                plane(c)[i] = light * (1 + 1.5f * chroma * wave) + noise(random);
                plane(4 + c)[i] = 0.05f + 0.04f * wave; // a dark reference, a model, a weight
                plane(8 + c)[i] = 0.3f + 0.2f * wave;
                plane(12 + c)[i] = light;
            }
            for (std::size_t n = 0; n < 4; n++)
                plane(4 * n + 3)[i] = 1;
        }
    }
    KernelRow row(const std::vector<double>& uniforms) {
        KernelRow row;
        for (std::size_t n = 0; n < 4; n++)
            for (std::size_t c = 0; c < 4; c++)
                row.inputs[n][c] = plane(4 * n + c);
        for (std::size_t c = 0; c < 3; c++)
            row.output[c] = plane(16 + c);
        row.count = kPixels;
        row.x = 0.5;
        row.y = 300.5;
        row.uniforms = uniforms.data();
        return row;
    }

private:
    float* plane(std::size_t n) { return values_.get() + n * kPixels; }
    hwy::AlignedFreeUniquePtr<float[]> values_;
};

void run(benchmark::State& state, void (*form)(const KernelRow&),
         const std::vector<double>& uniforms) {
    Picture picture;
    const KernelRow row = picture.row(uniforms);
    for (auto _ : state) {
        form(row);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * kPixels));
}

} // namespace
} // namespace kelvaro

int main(int argc, char** argv) {
    using namespace kelvaro;
    for (const Case& c : cases()) {
        const std::string name = c.kernel.name;
        benchmark::RegisterBenchmark((name + "/vector").c_str(), run, c.kernel.vector, c.uniforms);
        benchmark::RegisterBenchmark((name + "/scalar").c_str(), run, c.kernel.scalar, c.uniforms);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
