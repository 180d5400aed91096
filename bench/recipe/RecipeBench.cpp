// How fast edits are read and written: one by one, and those of a folder with ten thousand photos.
#include "fakes/SeededRandom.h"
#include "fakes/TemporaryFolder.h"
#include "platform/system/PosixFileSystem.h"
#include "recipe/AdjustmentCatalogue.h"
#include "recipe/RecipeCoding.h"
#include "recipe/Sidecar.h"

#include <benchmark/benchmark.h>

namespace kelvaro {
namespace {

// Every value set; `masks` masks of one gradient and one stroke of `points` points each.
Adjustments recipe(int masks, int points) {
    SeededRandom random;
    Adjustments adjustments;
    double share = 0.13;
    for (const auto& spec : storedKeyCatalogue()) {
        spec.setValue(adjustments,
                      spec.range.lower + (spec.range.upper - spec.range.lower) * share);
        share += 0.031;
    }
    for (int i = 0; i < masks; ++i) {
        LocalMask mask = newMask(random);
        mask.exposure = 0.7;
        mask.components = {
            newComponent(MaskComponent::Kind::linear, MaskComponent::Mode::add, random),
            newComponent(MaskComponent::Kind::brush, MaskComponent::Mode::subtract, random)};
        BrushStroke stroke;
        for (int p = 0; p < points; ++p)
            stroke.points.push_back({p / 7001.0, p / 9001.0});
        mask.components[1].strokes = {stroke};
        adjustments.masks.push_back(std::move(mask));
    }
    return adjustments;
}

void encode(benchmark::State& state) {
    const Adjustments adjustments =
        recipe(static_cast<int>(state.range(0)), static_cast<int>(state.range(1)));
    std::size_t bytes = 0;
    for (auto _ : state) {
        const auto text = encodedText(adjustments);
        bytes = text->size();
        benchmark::DoNotOptimize(text);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
    state.counters["file_bytes"] = static_cast<double>(bytes);
}
BENCHMARK(encode)->Args({0, 0})->Args({2, 500})->Args({4, 10000});

void decode(benchmark::State& state) {
    const auto text =
        encodedText(recipe(static_cast<int>(state.range(0)), static_cast<int>(state.range(1))));
    SeededRandom random;
    for (auto _ : state) {
        const auto adjustments = decodeAdjustments(*text, random);
        benchmark::DoNotOptimize(adjustments);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text->size()));
}
BENCHMARK(decode)->Args({0, 0})->Args({2, 500})->Args({4, 10000});

// From the page cache: what is measured is our work and the system's calls, not the disk.
void loadFolder(benchmark::State& state) {
    TemporaryFolder folder;
    PosixFileSystem files;
    SeededRandom random;
    const std::string text = encodedText(recipe(0, 0)).value();
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        writeFile(folder / (".tarnwell/IMG_" + std::to_string(i) + ".CR3.json"), text);
    }
    Sidecar sidecar(files, random);
    for (auto _ : state) {
        const auto loaded = sidecar.load(folder.path());
        if (!loaded || loaded->edits.size() != static_cast<std::size_t>(state.range(0))) {
            state.SkipWithError("not all edits were read");
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(loadFolder)->Arg(10'000)->Unit(benchmark::kMillisecond);

// With the flush to the disk, over an existing sidecar.
void save(benchmark::State& state) {
    TemporaryFolder folder;
    PosixFileSystem files;
    SeededRandom random;
    Sidecar sidecar(files, random);
    const Adjustments adjustments = recipe(0, 0);
    for (auto _ : state) {
        if (!sidecar.save(folder / "a.jpg", adjustments, 1)) state.SkipWithError("not saved");
    }
}
BENCHMARK(save)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace kelvaro
