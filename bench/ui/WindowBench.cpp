// The window over a library of 100,000 photos, measured from outside: how soon the grid stands, how
// fast it scrolls, what holds the main thread, how much memory it takes.
//
//     bench_ui_window [--minutes N]      prints a table with the aims; N minutes of scripted use
//     (1)
//
// Needs a display or QT_QPA_PLATFORM=offscreen. Every figure comes from a process of its own, which
// the program starts as `bench_ui_window --child WHAT`. KELVARO_BENCH_LIBRARY names the library.
#include "library/BenchLibrary.h"
#include "ui/BlockWatch.h"
#include "ui/shell/ProgramParts.h"
#include "ui/shell/QtMainThread.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QScrollBar>
#include <QTimer>
#include <QWheelEvent>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <malloc.h>
#include <random>

namespace kelvaro {
namespace {

constexpr std::size_t photoCount = 100'000;
constexpr int starts = 5;
constexpr int scrollFrames = 1500;
constexpr const char* startVariable = "KELVARO_BENCH_START"; // ns, when the parent began the child

double toMs(std::int64_t ns) {
    return double(ns) / 1e6;
}

double megabytes(const char* field) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(field)) return std::stod(line.substr(line.find(':') + 1)) / 1024;
    }
    return 0;
}

// --- In the child ---

struct Frame {
    double ms = 0, busyMs = 0; // on the clock, and of work on the main thread
};

// Begun before the application, as the program does.
struct Begun {
    QtMainThread mainThread;
    Cancellation interruption;
    WindowServices services{mainThread, {}, interruption, "bench"};
};

class Child {
public:
    Child(BlockWatch& application, Begun& begun)
        : application_(application), services_(begun.services) {
        application_.onPainted = [this](QObject* widget) { painted(widget); };
        tick_.start(10); // so that no wait is longer
        window_.show();
    }

    // Runs the event loop until `done` holds; ends the process when it never does.
    template<class Done>
    void until(Done done, int limitMs = 300'000) {
        QElapsedTimer clock;
        clock.start();
        while (!done()) {
            turn();
            if (clock.elapsed() > limitMs) std::exit(1);
        }
    }
    bool isListed() const { return library().view().get()->photos.size() >= photoCount; }
    bool isComplete() const { return isListed() && window_.pictures().areVisibleReady(); }

    void index() {
        until([&] { return isListed() && library().isIdle() && isComplete(); });
        std::printf("%.0f\n", toMs(monotonicNs() - begin_));
        // The thumbnails reach the disk behind what is shown.
        pause(2);
    }
    void start() {
        until([&] { return firstWhole_ != 0; });
        std::printf("%.0f %.0f %.0f %.0f\n", toMs(firstPainted_ - begin_),
                    toMs(firstGrid_ - begin_), toMs(firstWhole_ - begin_), workMs_);
    }
    void scroll() {
        until([&] { return isListed() && library().isIdle() && isComplete(); });
        GridView& grid = window_.libraryPage().grid();
        QScrollBar* bar = grid.verticalScrollBar();
        std::vector<Frame> byBar, byWheel;
        for (int at = 0; at < scrollFrames; ++at)
            byBar.push_back(
                frame([&] { bar->setValue(int(qint64(bar->maximum()) * at / scrollFrames)); }));
        bar->setValue(0);
        // There and back again, so that what is passed the second time is in memory.
        for (int at = 0; at < scrollFrames; ++at)
            byWheel.push_back(frame([&] { turnWheel(at % 200 < 100 ? -120 : 120); }));
        for (const auto* frames : {&byBar, &byWheel})
            std::printf("%.1f %.1f %.1f ", share(*frames, &Frame::ms, 0.99),
                        share(*frames, &Frame::busyMs, 0.99), share(*frames, &Frame::busyMs, 1));
        std::printf("\n");
    }
    void use(double minutes);

private:
    // Sleeps until something happens; with a time limit Qt would spin instead, on a core that the
    // library wants.
    static void turn() {
        QApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
    static void pause(double seconds) {
        QElapsedTimer clock;
        clock.start();
        while (double(clock.elapsed()) < seconds * 1000)
            turn();
    }
    LibraryStore& library() const { return services_.library(); }
    void painted(QObject* widget) {
        if (widget != window_.libraryPage().grid().viewport()) return;
        const std::int64_t now = monotonicNs();
        if (firstPainted_ == 0) firstPainted_ = now;
        if (firstGrid_ == 0 && isListed()) {
            firstGrid_ = now;
            workMs_ = 1000.0 * double(std::clock()) / CLOCKS_PER_SEC;
        }
        if (firstGrid_ != 0 && firstWhole_ == 0 && isComplete()) firstWhole_ = now;
    }
    template<class Act>
    Frame frame(Act act) {
        const std::int64_t begin = monotonicNs(), busy = busyNs();
        act();
        QApplication::processEvents();
        return {toMs(monotonicNs() - begin), toMs(busyNs() - busy)};
    }
    void turnWheel(int angle) {
        QWidget* viewport = window_.libraryPage().grid().viewport();
        const QPointF at(viewport->width() / 2.0, viewport->height() / 2.0);
        QWheelEvent event(at, viewport->mapToGlobal(at), {}, {0, angle}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(viewport, &event);
    }
    static double share(const std::vector<Frame>& frames, double Frame::*field, double part) {
        std::vector<double> values;
        for (const Frame& each : frames)
            values.push_back(each.*field);
        std::ranges::sort(values);
        return values[std::min(values.size() - 1, std::size_t(double(values.size()) * part))];
    }

    BlockWatch& application_;
    const std::int64_t begin_ = qEnvironmentVariable(startVariable).toLongLong();
    WindowServices& services_;
    Appearance appearance_;
    MainWindow window_{partsOf(services_, appearance_, "bench")};
    QTimer tick_;
    std::int64_t firstPainted_ = 0, firstGrid_ = 0, firstWhole_ = 0;
    double workMs_ = 0; // of all threads until the grid stood
};

// What a person does, in a random order that is the same every time.
void Child::use(double minutes) {
    until([&] { return isListed() && library().isIdle(); });
    application_.clear();
    std::mt19937 random(7);
    const auto upTo = [&](int limit) { return int(random() % unsigned(limit)); };
    GridView& grid = window_.libraryPage().grid();
    const char* searches[] = {"2021", "iso 400", "raw", "50mm", "march", "img_12", "f/2.8"};
    const std::function<void()> acts[] = {
        [&] { turnWheel(upTo(2) ? -360 : 240); },
        [&] { turnWheel(-120); },
        [&] { grid.verticalScrollBar()->setValue(upTo(grid.verticalScrollBar()->maximum() + 1)); },
        [&] {
            const std::string text = searches[upTo(std::size(searches))];
            for (std::size_t end = 1; end <= text.size(); ++end) {
                library().setSearchText(text.substr(0, end));
                QApplication::processEvents();
            }
        },
        [&] { library().setSearchText(""); },
        [&] { grid.selectAll(); },
        [&] { grid.selectNone(); },
        [&] { library().setThumbSize(64 + upTo(300)); },
        [&] {
            library().setSortOrder({kSortKeys[size_t(upTo(5))], upTo(2) == 0});
        },
        [&] {
            const auto& folders = library().folders().get();
            library().setScope({Scope::Kind::folder, folders[size_t(upTo(int(folders.size())))]});
        },
        [&] {
            library().setScope({Scope::Kind::all, {}});
        },
        [&] {
            const auto view = library().view().get();
            if (view->photos.empty()) return;
            const PhotoUrl url = view->photos[size_t(upTo(int(view->photos.size())))]->url;
            upTo(2) ? library().requestInfo(url) : library().toggleFavorite({url});
        },
        [&] {
            const auto view = library().view().get();
            if (view->photos.empty()) return;
            library().openEditor(view->photos[size_t(upTo(int(view->photos.size())))]->url);
        },
        [&] { library().closeEditor(); },
    };
    QElapsedTimer clock;
    clock.start();
    int done = 0;
    while (double(clock.elapsed()) < minutes * 60'000) {
        acts[upTo(std::size(acts))]();
        ++done;
        pause(0.06);
    }
    const double atOnce = megabytes("VmRSS");
    library().closeEditor();
    pause(double(IdleMemory::rest.count()) + 2);
    const double rested = megabytes("VmRSS");
    const auto blocks = application_.blocks();
    constexpr double most = 50;
    const auto busy =
        std::ranges::count_if(blocks, [](const auto& block) { return block.busyMs > most; });
    const auto byTheClock =
        std::ranges::count_if(blocks, [](const auto& block) { return block.ms > most; });
    const auto inMegabytes = [](std::size_t bytes) { return double(bytes) / (1 << 20); };
    const struct mallinfo2 heap = ::mallinfo2();
    std::printf("%d %d %.0f %.0f %d %.0f %.0f %.0f %.0f %.0f\n", int(byTheClock), done, atOnce,
                megabytes("VmHWM"), int(busy), rested,
                inMegabytes(services_.render().thumbnails().memoryBytes()),
                inMegabytes(services_.render().sessions().bytes()),
                inMegabytes(heap.uordblks + heap.hblkhd), inMegabytes(heap.arena + heap.hblkhd));
    for (std::size_t at = 0; at < std::min<std::size_t>(5, blocks.size()); ++at)
        std::printf("  %4.0f ms, %4.0f of them at work: %s\n      in %s\n", blocks[at].ms,
                    blocks[at].busyMs, blocks[at].what.c_str(), blocks[at].where.c_str());
}

int runChild(int argc, char** argv, const QString& what, double minutes) {
    Begun begun;
    BlockWatch application(argc, argv);
    Child child(application, begun);
    if (what == "index") child.index();
    if (what == "start") child.start();
    if (what == "scroll") child.scroll();
    if (what == "use") child.use(minutes);
    std::fflush(stdout);
    std::_Exit(0); // what the end takes is not measured
}

// --- In the parent ---

QString output(const QString& what, double minutes = 0) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(startVariable, QString::number(monotonicNs()));
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start("/proc/self/exe", {"--child", what, QString::number(minutes)});
    process.waitForFinished(-1);
    return QString::fromUtf8(process.readAllStandardOutput());
}

void row(const char* name, double value, const char* unit, double aim) {
    std::printf("%-58s %8.1f %-3s aim %6.0f  %s\n", name, value, unit, aim,
                value <= aim ? "met" : "MISSED");
}

// Settings and caches of a user who has the whole library and nothing else.
void makeHome(const std::filesystem::path& home) {
    std::filesystem::create_directories(home / ".config/Kelvaro");
    std::ofstream settings(home / ".config/Kelvaro/settings.json");
    settings << "{\"introductionSeen\": true, \"folders\": [";
    for (int number = 1; number <= samples::LibraryPlan{}.folders; ++number)
        settings << (number > 1 ? ", " : "") << '"'
                 << samples::libraryFolder(benchLibrary(), number).string() << '"';
    settings << "]}\n";
    for (const char* variable : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_DATA_HOME"})
        qunsetenv(variable);
    qputenv("HOME", home.c_str());
}

void measureAll(double minutes) {
    makeHome(benchLibrary().parent_path() / "home");
    std::printf("first start, everything read and indexed: %s", qPrintable(output("index")));
    std::vector<double> painted, grid, pictures, work;
    for (int at = 0; at < starts; ++at) {
        const QStringList numbers = output("start").split(' ');
        if (numbers.size() < 4) return void(std::printf("the window did not start\n"));
        painted.push_back(numbers[0].toDouble());
        grid.push_back(numbers[1].toDouble());
        pictures.push_back(numbers[2].toDouble() - numbers[1].toDouble());
        work.push_back(numbers[3].toDouble());
    }
    for (auto* values : {&painted, &grid, &pictures, &work})
        std::ranges::sort(*values);
    std::printf("warm starts, median of %d; the window is painted after %.0f ms; until the grid "
                "stands all threads work %.0f ms\n",
                starts, painted[starts / 2], work[starts / 2]);
    row("process start to the grid of all photos", grid[starts / 2], "ms", 700);
    row("from there to the first screen's thumbnails, from disk", pictures[starts / 2], "ms", 150);
    const QStringList frames = output("scroll").split(' ');
    if (frames.size() >= 6) {
        row("frame while the bar is dragged through all, p99", frames[0].toDouble(), "ms", 16);
        row("    of that work on the main thread, p99", frames[1].toDouble(), "ms", 16);
        row("frame while the wheel turns, p99", frames[3].toDouble(), "ms", 16);
        row("    of that work on the main thread, p99", frames[4].toDouble(), "ms", 16);
        std::printf("    most work in a frame: %s ms by bar, %s ms by wheel\n",
                    qPrintable(frames[2]), qPrintable(frames[5]));
    }
    const QString use = output("use", minutes);
    const QStringList numbers = use.section('\n', 0, 0).split(' ');
    if (numbers.size() < 10) return;
    row("blocks of the main thread above 50 ms in scripted use", numbers[0].toDouble(), "", 0);
    row("    of that with more than 50 ms of work", numbers[4].toDouble(), "", 0);
    row("memory at most", numbers[3].toDouble(), "MB", 600);
    row("    after the last act", numbers[2].toDouble(), "MB", 600);
    row("    once the hand rests", numbers[5].toDouble(), "MB", 600);
    std::printf("    then %s MB of thumbnails, %s MB of decoded photos; %s MB in use of a heap of "
                "%s MB\n",
                qPrintable(numbers[6]), qPrintable(numbers[7]), qPrintable(numbers[8]),
                qPrintable(numbers[9]));
    std::printf("    %s acts in %.1f minutes; the longest blocks:\n%s", qPrintable(numbers[1]),
                minutes, qPrintable(use.section('\n', 1)));
}

} // namespace
} // namespace kelvaro

int main(int argc, char** argv) {
    const auto after = [&](const char* name) -> const char* {
        for (int at = 1; at + 1 < argc; ++at) {
            if (std::string_view(argv[at]) == name) return argv[at + 1];
        }
        return nullptr;
    };
    if (const char* what = after("--child"))
        return kelvaro::runChild(argc, argv, what, argc > 3 ? std::atof(argv[3]) : 1);
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // rows appear as they are measured
    const char* minutes = after("--minutes");
    kelvaro::measureAll(minutes ? std::atof(minutes) : 1);
    return 0;
}
