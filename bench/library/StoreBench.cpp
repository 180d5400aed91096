// The library store with 100,000 photos in 1,000 folders, then with 50,000 in one: the second
// start, a rescan that finds nothing new, favourites for 5,000 photos, and how long any single job
// holds the main thread. All from the page cache. Each step is done several times; aims stand
// beside what they are for.
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

std::vector<FolderUrl> foldersIn(const std::filesystem::path& root) {
    std::vector<FolderUrl> folders;
    for (const auto& entry : std::filesystem::directory_iterator(root))
        if (entry.is_directory()) folders.push_back(entry.path().string());
    std::sort(folders.begin(), folders.end());
    return folders;
}

// One library, step by step.
class Run {
public:
    // The cache stays beside the library, so that the second run of this program has it at once.
    Run(Bench& bench, const std::filesystem::path& library)
        : bench_(bench),
          empty_(residentMegabytes()),
          cache_(library.parent_path() / (library.filename().string() + "-cache.db")) {
        storeFolders(bench.settings, foldersIn(library));
        measure(first_, [this] { open(); });
        tell("first start of this bench (with its cache, if it had one)", first_, "ms");
        std::printf("%zu photos, %zu groups\n", store_->photoCount(),
                    store_->view().get()->groups.size());
    }
    void start() {
        store_.reset();
        bench_.main.worst = 0;
        measure(start_, [this] { open(); });
        startJob_.add(bench_.main.worst * 1e3);
    }
    void round() {
        start();
        bench_.main.worst = 0;
        measure(rescan_, [this] { store_->rescanAll(); });
        rescanJob_.add(bench_.main.worst * 1e3);
        memory_.add(residentMegabytes() - empty_);
        toggleTwice();
        measure(search_, [this] { store_->setSearchText("raw 50mm"); });
        measure(ignored_, [this] { store_->setSearchText(""); });
        measure(sort_, [this] { store_->setSortOrder({SortKey::name, true}); });
        measure(ignored_, [this] { store_->setSortOrder({}); });
    }
    void tellStart() const {
        tell("second start to the complete sorted, grouped list (<= 500)", start_, "ms");
        tell("  longest job on the main thread meanwhile (<= 8)", startJob_, "ms");
    }
    void tellAll() const {
        tellStart();
        tell("full rescan, nothing changed (<= 2000)", rescan_, "ms");
        tell("  longest job on the main thread meanwhile (<= 8)", rescanJob_, "ms");
        tell("favorite for 5,000 photos, main thread (<= 50)", toggle_, "ms");
        tell("  until it is written and shown", written_, "ms");
        tell("search until the new list is on the main thread", search_, "ms");
        tell("other sort order until the new list is there", sort_, "ms");
        tell("memory of the store (<= 400)", memory_, "MB");
    }

private:
    void open() { store_ = bench_.open(cache_); }
    void toggleTwice() { // on and off again
        std::vector<PhotoUrl> photos;
        for (const Photo* photo : store_->view().get()->photos)
            if (photos.size() < 5000) photos.push_back(photo->url);
        for (int i = 0; i < 2; ++i) {
            measure(written_, [&] {
                const double begun = threadSeconds();
                store_->toggleFavorite(photos);
                toggle_.add((threadSeconds() - begun) * 1e3);
            });
        }
    }
    // Milliseconds until the store rests after `action`.
    template<class Action>
    void measure(Range& range, Action action) {
        const double begun = bench_.clock.monotonicSeconds(), processor = processSeconds();
        action();
        bench_.main.runUntil([&] { return store_->isIdle(); });
        range.add((bench_.clock.monotonicSeconds() - begun) * 1e3,
                  (processSeconds() - processor) * 1e3);
    }

    Bench& bench_;
    const double empty_;
    SqliteMetaCache cache_;
    std::unique_ptr<LibraryStore> store_;
    Range first_, start_, startJob_, rescan_, rescanJob_, toggle_, written_, search_, sort_;
    Range ignored_, memory_;
};

} // namespace
} // namespace kelvaro

// With "starts" the second start of the first library alone, twenty times: for a profiler.
int main(int argc, char** argv) {
    using namespace kelvaro;
    const bool onlyStarts = argc > 1 && std::string_view(argv[1]) == "starts";
    std::vector<std::filesystem::path> libraries{benchLibrary()};
    if (!onlyStarts) libraries.push_back(benchLargeFolder());
    for (const auto& library : libraries) {
        Bench bench;
        std::printf("\n%-58s %8s %8s %8s\n", library.c_str(), "best", "worst", "cpu");
        Run run(bench, library);
        for (int i = 0; i < (onlyStarts ? 20 : 5); ++i)
            onlyStarts ? run.start() : run.round();
        onlyStarts ? run.tellStart() : run.tellAll();
    }
    return 0;
}
