// From photo files to a sorted, grouped, searchable list: reading metadata for the first time, the
// second start out of the cache, and what a keystroke or a new sort order costs. All from the page
// cache.
#include "fakes/TemporaryFolder.h"
#include "library/BenchLibrary.h"
#include "library/MetaReader.h"
#include "library/PhotoTable.h"
#include "platform/cache/SqliteMetaCache.h"
#include "platform/metadata/ExifPropertyReader.h"
#include "platform/system/IcuCalendar.h"
#include "platform/system/IcuTextRules.h"
#include "platform/system/PosixFileSystem.h"
#include "samples/Library.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <mutex>
#include <thread>

namespace kelvaro {
namespace {

constexpr int kThreads = 2;
constexpr int kFolders = 1000;

struct Tools {
    PosixFileSystem files;
    ExifPropertyReader properties;
    std::unique_ptr<TextRules> rules = makeIcuTextRules("en");
    std::unique_ptr<LocalCalendar> calendar = makeIcuCalendar("Europe/Berlin");

    FolderPhotos list(const std::filesystem::path& folder) {
        const auto files_ = files.listWithStatus(
            folder, [](std::string_view name) { return !name.starts_with('.'); });
        std::vector<Photo> photos;
        for (const ListedFile& file : files_.value()) {
            const auto kind = photoKindOfName(file.name);
            if (kind)
                photos.push_back(makePhoto(folder.string(), file.name, *kind, file.status.size,
                                           file.status.modified, file.status.created));
        }
        return FolderListing::make(folder.string(), std::move(photos), *rules);
    }
};

// Calls `use` with each number from 1 to `count`, on all threads.
template<class Use>
void onAllThreads(int count, Use&& use) {
    std::atomic<int> next{1};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            for (int number = next++; number <= count; number = next++)
                use(number);
        });
    }
    for (std::thread& thread : threads)
        thread.join();
}

// From nothing to records in the cache; items a second are photos a second, to be at least 1,500
// for JPEG and 800 for RAW files.
void firstIndexing(benchmark::State& state, const char* kind, int rawEvery) {
    Tools tools;
    const int folders = 50;
    const auto library = benchFolder() / kind;
    samples::writeLibrary(library, {folders, 100, rawEvery});
    std::atomic<std::int64_t> read{0};
    for (auto _ : state) {
        TemporaryFolder folder;
        SqliteMetaCache cache(folder / "meta.sqlite");
        MetaReader reader(tools.properties, &cache, *tools.calendar);
        onAllThreads(folders, [&](int number) {
            const FolderPhotos photos = tools.list(samples::libraryFolder(library, number));
            reader.read(photos->folder(), photos->photos(), {1, 64}, Cancellation(),
                        [&](const PhotoMetas& metas) { read += std::int64_t(metas.size()); });
        });
    }
    state.SetItemsProcessed(read);
}
BENCHMARK_CAPTURE(firstIndexing, jpeg, "jpeg", 0)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();
BENCHMARK_CAPTURE(firstIndexing, raw, "raw", 1)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

// A cache that knows the whole library, filled once.
const std::filesystem::path& filledCache(Tools& tools) {
    static const std::filesystem::path file = [&] {
        const auto path = benchLibrary().parent_path() / "meta.sqlite";
        SqliteMetaCache cache(path);
        MetaReader reader(tools.properties, &cache, *tools.calendar);
        onAllThreads(kFolders, [&](int number) {
            const FolderPhotos photos = tools.list(samples::libraryFolder(benchLibrary(), number));
            if (reader.remembered(*photos).photos.size() == photos->size()) return;
            reader.read(photos->folder(), photos->photos(), {1, 4096}, Cancellation(),
                        [](const PhotoMetas&) {});
        });
        return path;
    }();
    return file;
}

// The whole library in a table, as the second start puts it there.
void fill(PhotoTable& table, Tools& tools, const std::filesystem::path& cacheFile) {
    SqliteMetaCache cache(cacheFile);
    MetaReader reader(tools.properties, &cache, *tools.calendar);
    std::mutex turn;
    onAllThreads(kFolders, [&](int number) {
        const FolderPhotos photos = tools.list(samples::libraryFolder(benchLibrary(), number));
        const PhotoMetas metas = reader.remembered(*photos).photos;
        const std::lock_guard guard(turn);
        table.setFolder(photos);
        table.setMeta(metas);
    });
}

LibraryQuery request(const char* searchText = "") {
    LibraryQuery request;
    request.searchText = searchText;
    request.now = FileTime{1'760'000'000'000'000'000};
    return request;
}

void secondStart(benchmark::State& state) {
    Tools tools;
    const auto cache = filledCache(tools);
    for (auto _ : state) {
        PhotoTable table(*tools.rules, *tools.calendar);
        fill(table, tools, cache);
        const LibraryView view = table.query(request());
        if (view.photos.size() != 100'000) state.SkipWithError("photos are missing");
        state.counters["groups"] = double(view.groups.size());
    }
}
BENCHMARK(secondStart)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

// One table for all questions.
PhotoTable& wholeTable() {
    static Tools tools;
    static PhotoTable table(*tools.rules, *tools.calendar);
    if (table.size() == 0) fill(table, tools, filledCache(tools));
    return table;
}

void keystroke(benchmark::State& state, const char* searchText) {
    PhotoTable& table = wholeTable();
    table.query(request());
    for (auto _ : state) {
        const LibraryView view = table.query(request(searchText));
        state.counters["found"] = double(view.photos.size());
    }
}
BENCHMARK_CAPTURE(keystroke, nothing, "")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(keystroke, oneLetter, "a")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(keystroke, twoLetters, "mm")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(keystroke, name, "img_49")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(keystroke, fiveWords, "iso 400 50mm march 2015")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(keystroke, unknown, "zzyzx")->Unit(benchmark::kMillisecond);

void sortChange(benchmark::State& state, SortKey from, SortKey to) {
    PhotoTable& table = wholeTable();
    LibraryQuery before = request(), after = request();
    before.order.key = from;
    after.order.key = to;
    for (auto _ : state) {
        state.PauseTiming();
        table.query(before);
        state.ResumeTiming();
        benchmark::DoNotOptimize(table.query(after));
    }
}
BENCHMARK_CAPTURE(sortChange, toName, SortKey::size, SortKey::name)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sortChange, toDate, SortKey::name, SortKey::dateTaken)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(sortChange, toSize, SortKey::dateTaken, SortKey::size)
    ->Unit(benchmark::kMillisecond);

void options(benchmark::State& state) {
    PhotoTable& table = wholeTable();
    for (auto _ : state)
        benchmark::DoNotOptimize(table.filterOptions(request()));
}
BENCHMARK(options)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace kelvaro

BENCHMARK_MAIN();
