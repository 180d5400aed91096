// Speed of reading the properties of every test photo.
#include "places/Places.h"
#include "platform/metadata/ExifPropertyReader.h"

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

namespace kelvaro {
namespace {

void readAll(benchmark::State& state) {
    const std::filesystem::path folder = places::photos();
    std::vector<std::filesystem::path> files;
    for (const char* part : {"raw", "bitmap"}) {
        std::error_code error;
        for (const auto& entry : std::filesystem::directory_iterator(folder / part, error)) {
            files.push_back(entry.path());
        }
    }
    if (files.empty()) return state.SkipWithError("no photos");
    ExifPropertyReader reader;
    for (auto _ : state) {
        for (const auto& file : files)
            benchmark::DoNotOptimize(reader.read(file));
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t(files.size()));
}
BENCHMARK(readAll)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace kelvaro

BENCHMARK_MAIN();
