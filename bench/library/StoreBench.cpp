// The library store with 100,000 photos in 1,000 folders: the second start, a rescan that finds
// nothing new, favourites for 5,000 photos, and how long any single job holds the main thread. All
// from the page cache. Each step is done several times, the best and the worst are told.
#include "base/MainLoop.h"
#include "fakes/FolderTrash.h"
#include "fakes/MemorySettings.h"
#include "fakes/TemporaryFolder.h"
#include "library/BenchLibrary.h"
#include "library/LibrarySettings.h"
#include "library/LibraryStore.h"
#include "platform/cache/SqliteMetaCache.h"
#include "platform/metadata/ExifPropertyReader.h"
#include "platform/system/IcuCalendar.h"
#include "platform/system/IcuTextRules.h"
#include "platform/system/PosixFileSystem.h"
#include "platform/system/SystemClock.h"
#include "platform/system/SystemRandom.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <malloc.h>
#include <time.h>

namespace kelvaro {
namespace {

double threadSeconds() { // of the processor: another program must not count as ours
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

// A main loop that knows the longest of its jobs.
class TimedLoop final : public MainThread {
public:
    void post(std::function<void()> job) override {
        loop_.post([this, job = std::move(job)] {
            const double begun = threadSeconds();
            job();
            worst = std::max(worst, threadSeconds() - begun);
        });
    }
    bool isCurrent() const override { return loop_.isCurrent(); }
    bool runUntil(const std::function<bool()>& done) { return loop_.runUntil(done, 600); }

    double worst = 0;

private:
    MainLoop loop_;
};

double residentMegabytes() {
    ::malloc_trim(0);
    std::ifstream status("/proc/self/statm");
    double total = 0, resident = 0;
    status >> total >> resident;
    return resident * 4096 / 1e6;
}

struct Bench {
    PosixFileSystem files;
    ExifPropertyReader properties;
    SystemClock clock;
    SystemRandom random;
    MemorySettings settings;
    TemporaryFolder root;
    FolderTrash trash{root / "trash"};
    UserFolders folders{root.path(), root.path(), root.path(), root / "support", root.path()};
    std::unique_ptr<LocalCalendar> calendar = makeIcuCalendar("Europe/Berlin");
    std::unique_ptr<TextRules> texts = makeIcuTextRules("en");
    TimedLoop main;

    std::unique_ptr<LibraryStore> open(MetaCache& cache) {
        return std::make_unique<LibraryStore>(LibraryServices{.files = files,
                                                              .settings = settings,
                                                              .folders = folders,
                                                              .clock = clock,
                                                              .main = main,
                                                              .random = random,
                                                              .properties = properties,
                                                              .texts = *texts,
                                                              .calendar = *calendar,
                                                              .trash = trash,
                                                              .metaCache = &cache});
    }
    double settle(LibraryStore& store) {
        const double begun = clock.monotonicSeconds();
        main.runUntil([&] { return store.isIdle(); });
        return clock.monotonicSeconds() - begun;
    }
};

void tell(const char* what, double best, double worst, const char* unit) {
    std::printf("%-58s %8.1f %8.1f %s\n", what, best, worst, unit);
    std::fflush(stdout);
}

struct Range {
    double best = 1e9, worst = 0;
    void add(double value) {
        best = std::min(best, value);
        worst = std::max(worst, value);
    }
};

} // namespace
} // namespace kelvaro

int main() {
    using namespace kelvaro;
    Bench bench;
    std::vector<FolderUrl> folders;
    for (const auto& entry : std::filesystem::directory_iterator(benchLibrary()))
        if (entry.is_directory()) folders.push_back(entry.path().string());
    std::sort(folders.begin(), folders.end());
    storeFolders(bench.settings, folders);
    // The cache stays beside the library, so that the second run has it at once.
    SqliteMetaCache cache(benchLibrary().parent_path() / "store-bench-cache.db");
    const double empty = residentMegabytes();
    std::printf("%-58s %8s %8s\n", "", "best", "worst");
    {
        const double begun = bench.clock.monotonicSeconds();
        auto store = bench.open(cache);
        bench.settle(*store);
        const double seconds = bench.clock.monotonicSeconds() - begun;
        tell("first start of this bench (with its cache, if it had one)", seconds * 1e3,
             seconds * 1e3, "ms");
        std::printf("%zu photos, %zu groups\n", store->photoCount(),
                    store->view().get()->groups.size());
    }
    Range start, slice, rescan, rescanSlice, toggle, search, sort;
    double memory = 0;
    for (int round = 0; round < 5; ++round) {
        bench.main.worst = 0;
        const double begun = bench.clock.monotonicSeconds();
        auto store = bench.open(cache);
        bench.settle(*store);
        start.add((bench.clock.monotonicSeconds() - begun) * 1e3);
        slice.add(bench.main.worst * 1e3);
        bench.main.worst = 0;
        store->rescanAll();
        rescan.add(bench.settle(*store) * 1e3);
        rescanSlice.add(bench.main.worst * 1e3);
        memory = std::max(memory, residentMegabytes() - empty);
        std::vector<PhotoUrl> photos;
        for (const Photo* photo : store->view().get()->photos)
            if (photos.size() < 5000) photos.push_back(photo->url);
        for (int i = 0; i < 2; ++i) { // on and off again
            const double at = threadSeconds();
            store->toggleFavorite(photos);
            toggle.add((threadSeconds() - at) * 1e3);
            bench.settle(*store);
        }
        store->setSearchText("raw 50mm");
        search.add(bench.settle(*store) * 1e3);
        store->setSearchText("");
        bench.settle(*store);
        store->setSortOrder({SortKey::name, true});
        sort.add(bench.settle(*store) * 1e3);
        store->setSortOrder({});
        bench.settle(*store);
    }
    tell("second start to the complete sorted, grouped list (<= 500)", start.best, start.worst,
         "ms");
    tell("  longest job on the main thread meanwhile (<= 8)", slice.best, slice.worst, "ms");
    tell("full rescan, nothing changed (<= 2000)", rescan.best, rescan.worst, "ms");
    tell("  longest job on the main thread meanwhile (<= 8)", rescanSlice.best, rescanSlice.worst,
         "ms");
    tell("favorite for 5,000 photos, main thread (<= 50)", toggle.best, toggle.worst, "ms");
    tell("search until the new list is on the main thread", search.best, search.worst, "ms");
    tell("other sort order until the new list is there", sort.best, sort.worst, "ms");
    tell("memory of the store (<= 400)", memory, memory, "MB");
    return 0;
}
