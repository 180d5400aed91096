// The library store with 100,000 photos in 1,000 folders: the second start, a rescan that finds
// nothing new, favourites for 5,000 photos, and how long any single job holds the main thread. All
// from the page cache. Each step is done several times; aims stand beside what they are for.
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
#include "platform/system/InotifyWatcher.h"
#include "platform/system/MountTable.h"
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

double processSeconds() { // of the processor, on all threads
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

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
    InotifyWatcher watcher;
    MountTable drives;
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
                                                              .watcher = &watcher,
                                                              .drives = &drives,
                                                              .metaCache = &cache});
    }
};

// Best and worst of several times; beside them the least time of the processor, on all threads,
// which other programs hardly change.
struct Range {
    double best = 1e9, worst = 0, processor = 1e9;
    void add(double value, double processorTime = 1e9) {
        best = std::min(best, value);
        worst = std::max(worst, value);
        processor = std::min(processor, processorTime);
    }
};

void tell(const char* what, const Range& range, const char* unit) {
    std::printf("%-58s %8.1f %8.1f ", what, range.best, range.worst);
    if (range.processor < 1e9)
        std::printf("%8.1f %s\n", range.processor, unit);
    else
        std::printf("%8s %s\n", "", unit);
    std::fflush(stdout);
}

// Milliseconds until the store rests after `action`.
template<class Action>
void measure(Bench& bench, Range& range, Action action) {
    const double begun = bench.clock.monotonicSeconds(), processor = processSeconds();
    LibraryStore& store = action();
    bench.main.runUntil([&] { return store.isIdle(); });
    range.add((bench.clock.monotonicSeconds() - begun) * 1e3, (processSeconds() - processor) * 1e3);
}

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
    std::printf("%-58s %8s %8s %8s\n", "", "best", "worst", "cpu");
    std::unique_ptr<LibraryStore> store;
    const auto open = [&]() -> LibraryStore& {
        store.reset();
        store = bench.open(cache);
        return *store;
    };
    const auto after = [&](auto action) {
        return [&store, action]() -> LibraryStore& {
            action(*store);
            return *store;
        };
    };
    Range first, start, startJob, rescan, rescanJob, toggle, written, search, sort, memory;
    measure(bench, first, open);
    tell("first start of this bench (with its cache, if it had one)", first, "ms");
    std::printf("%zu photos, %zu groups\n", store->photoCount(),
                store->view().get()->groups.size());
    Range ignored;
    for (int round = 0; round < 5; ++round) {
        store.reset();
        bench.main.worst = 0;
        measure(bench, start, open);
        startJob.add(bench.main.worst * 1e3);
        bench.main.worst = 0;
        measure(bench, rescan, after([](LibraryStore& lib) { lib.rescanAll(); }));
        rescanJob.add(bench.main.worst * 1e3);
        memory.add(residentMegabytes() - empty);
        std::vector<PhotoUrl> photos;
        for (const Photo* photo : store->view().get()->photos)
            if (photos.size() < 5000) photos.push_back(photo->url);
        for (int i = 0; i < 2; ++i) { // on and off again
            measure(bench, written, after([&](LibraryStore& lib) {
                        const double begun = threadSeconds();
                        lib.toggleFavorite(photos);
                        toggle.add((threadSeconds() - begun) * 1e3);
                    }));
        }
        const auto find = [](const char* text) {
            return [text](LibraryStore& lib) { lib.setSearchText(text); };
        };
        const auto order = [](SortOrder by) {
            return [by](LibraryStore& lib) { lib.setSortOrder(by); };
        };
        measure(bench, search, after(find("raw 50mm")));
        measure(bench, ignored, after(find("")));
        measure(bench, sort, after(order({SortKey::name, true})));
        measure(bench, ignored, after(order({})));
    }
    tell("second start to the complete sorted, grouped list (<= 500)", start, "ms");
    tell("  longest job on the main thread meanwhile (<= 8)", startJob, "ms");
    tell("full rescan, nothing changed (<= 2000)", rescan, "ms");
    tell("  longest job on the main thread meanwhile (<= 8)", rescanJob, "ms");
    tell("favorite for 5,000 photos, main thread (<= 50)", toggle, "ms");
    tell("  until it is written and shown", written, "ms");
    tell("search until the new list is on the main thread", search, "ms");
    tell("other sort order until the new list is there", sort, "ms");
    tell("memory of the store (<= 400)", memory, "MB");
    return 0;
}
