// Latencies of the editor with the whole window, software drawing: from a movement of the hand on a
// slider to the frame on the canvas, settled frames, the brush, opening, and memory while walking
// through photos. Prints each figure beside its aim.
//     bench_ui_editor PHOTOS [--frames 200] [--walk 200] [--only walk|frames|brush|undo]
// PHOTOS is a copy of a folder with RAW and other photos of 24 MP: edits are written into it. Run
// it with QT_QPA_PLATFORM=offscreen or under Xvfb.
#include "develop/Recipes.h"
#include "editor/MaskList.h"
#include "platform/FreeMemory.h"
#include "raw_report/Picture.h"
#include "ui/editor/EditorScene.h"

#include <QDir>
#include <QPushButton>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <malloc.h>

namespace kelvaro {
namespace {

constexpr double never = -1; // no aim

struct Times {
    std::vector<double> milliseconds;

    double quantile(double share) const {
        if (milliseconds.empty()) return 0;
        std::vector<double> sorted = milliseconds;
        std::ranges::sort(sorted);
        return sorted[std::min(sorted.size() - 1, std::size_t(share * double(sorted.size())))];
    }
};

void printRow(const QString& name, const Times& times, double aimP50, double aimP99) {
    const auto aim = [](double value) {
        return value == never ? QString("-") : QString::number(value, 'f', 0);
    };
    const double p50 = times.quantile(0.5), p99 = times.quantile(0.99);
    const bool isMet = (aimP50 == never || p50 <= aimP50) && (aimP99 == never || p99 <= aimP99);
    std::printf("%-52s %5zu  %7.1f (%s)  %7.1f (%s)  %7.1f%s\n", qPrintable(name),
                times.milliseconds.size(), p50, qPrintable(aim(aimP50)), p99,
                qPrintable(aim(aimP99)), times.quantile(1), isMet ? "" : "  MISSED");
    std::fflush(stdout);
}

// How far two pictures of one size are apart: colour differences (CIEDE2000) of every third pixel
// both ways, for half and for 99 in a hundred of them. 1 is about what an eye sees side by side.
struct Apart {
    double p50 = 0, p99 = 0;

    static Apart between(const QImage& a, const QImage& b) {
        const auto lab = [](QRgb colour) {
            const auto linear = [](int value) { return report::lightOf(value / 255.0); };
            return report::labOf(
                {linear(qRed(colour)), linear(qGreen(colour)), linear(qBlue(colour))});
        };
        Times sorted; // of differences
        for (int y = 0; y < std::min(a.height(), b.height()); y += 3) {
            for (int x = 0; x < std::min(a.width(), b.width()); x += 3)
                sorted.milliseconds.push_back(
                    report::difference(lab(a.pixel(x, y)), lab(b.pixel(x, y))));
        }
        return {sorted.quantile(0.5), sorted.quantile(0.99)};
    }
};

// Counts in steps of 5 ms.
void printHistogram(const Times& times) {
    std::map<int, int> counts;
    for (const double ms : times.milliseconds)
        ++counts[static_cast<int>(ms / 5) * 5];
    for (const auto& [from, count] : counts)
        std::printf("    %3d ms %s %d\n", from, std::string(std::size_t(count), '#').c_str(),
                    count);
}

double megabytesOf(const char* file, const char* field) {
    std::ifstream status(file);
    for (std::string line; std::getline(status, line);)
        if (line.starts_with(field)) return std::stod(line.substr(line.find(':') + 1)) / 1024;
    return 0;
}
double residentMegabytes() {
    return megabytesOf("/proc/self/status", "VmRSS:");
}
// What memory goes to, in MiB. Pages that the system may take at any time (spare pixels) count as
// resident all the same.
struct Holdings {
    double resident = residentMegabytes();
    double lazilyFree = megabytesOf("/proc/self/smaps_rollup", "LazyFree:");
    double spare = double(sparePixelBytes()) / (1 << 20); // pictures' blocks that wait
    double used = 0, unused = 0;                          // of the heap
    double sessions = 0, analyses = 0, thumbnails = 0;
};

class EditorBench : public EditorScene {
public:
    EditorBench(const QString& folder, int frames, int walk, QString only)
        : folder_(QDir(folder).canonicalPath().toStdString()),
          frames_(frames),
          walk_(walk),
          only_(std::move(only)) {
        desktop.wanted = {.prefersDark = true, .reducesMotion = true};
    }

    void run() {
        settings.set("folders", std::vector<std::string>{folder_});
        open(true);
        canvas().onPainted = [this](const CanvasFrame& frame) {
            shown_ = frame;
            hasPicture_ = !frame.image.isNull();
            shown_.image = {}; // else the canvas would have to copy it to draw into it
        };
        if (only_ == "walk") return walking();
        if (only_ == "undo") return undoing();
        std::printf("%-52s %5s  %14s  %14s  %7s\n", "milliseconds (aims in brackets)", "n", "p50",
                    "p99", "most");
        for (const PixelSize size : {PixelSize{1920, 1200}, PixelSize{3840, 2160}}) {
            for (const bool raw : {true, false})
                measure(size, raw);
        }
        if (only_ == "frames" || only_ == "brush") return;
        opening();
        undoing();
        if (walk_ > 0) walking();
    }

private:
    // With a window as large as that takes: what lies outside of one is never painted.
    void setCanvasSize(PixelSize size) {
        for (int round = 0; round < 2; ++round) {
            window->resize(window->width() + size.width - canvas().width(),
                           window->height() + size.height - canvas().height());
            QApplication::processEvents();
        }
        settleCanvas();
        std::printf("canvas %d x %d\n", canvas().width(), canvas().height());
    }
    std::optional<std::size_t> photo(bool raw) const {
        const auto& photos = library->view().get()->photos;
        for (std::size_t at = 0; at < photos.size(); ++at)
            if (photos[at]->isRaw == raw) return at;
        return std::nullopt;
    }
    // From now until the first frame that shows what `act` does is on the canvas, in milliseconds.
    template<class Act>
    double untilPainted(Act act) {
        const std::uint64_t before = canvas().askedCount();
        QElapsedTimer clock;
        clock.start();
        act();
        until([&] { return shown_.asked > before; });
        return double(clock.nsecsElapsed()) / 1e6;
    }
    Times dragging(SliderRow* slider) {
        Times times;
        QTest::mousePress(slider, Qt::LeftButton, {}, QPoint(150, 20));
        for (int frame = 0; frame < frames_ + 5; ++frame) {
            // On one side of zero, where the slider is not held.
            const double x = 200 + 25 * std::sin((frame + 1) * 0.13);
            const double ms = untilPainted([&] { sendMove(slider, QPointF(x, 20)); });
            if (frame >= 5) times.milliseconds.push_back(ms); // the first ones find out how fast
        }
        QTest::mouseRelease(slider, Qt::LeftButton, {}, QPoint(150, 20));
        settleCanvas();
        return times;
    }
    // After a single change: until the first frame of full resolution, and until the one that
    // stays, which is developed before it is reduced as an export is.
    std::pair<Times, Times> afterChanges() {
        std::pair<Times, Times> times;
        for (int round = 0; round < std::max(5, frames_ / 10); ++round) {
            const std::uint64_t before = canvas().askedCount();
            QElapsedTimer clock;
            clock.start();
            model().change("Exposure",
                           [&](Adjustments& edit) { edit.exposure = 0.1 + 0.02 * round; });
            until([&] { return shown_.asked > before && shown_.stage != ViewStage::coarse; });
            times.first.milliseconds.push_back(double(clock.nsecsElapsed()) / 1e6);
            const QImage sharp = canvas().frame().image; // shared, not copied
            const bool isSettled = canvas().frame().isFinal;
            until([&] { return canvas().isSettled() && canvas().frame().isFinal; });
            times.second.milliseconds.push_back(double(clock.nsecsElapsed()) / 1e6);
            if (round > 1 || isSettled) continue; // the comparison takes long
            const Apart apart = Apart::between(sharp, canvas().frame().image);
            std::printf("    the full-quality frame is %.2f (p50), %.2f (p99) from the settled one "
                        "in colour (at most 1)\n",
                        apart.p50, apart.p99);
        }
        return times;
    }
    // `painted` points are in the mask before the hand begins.
    Times painting(int painted) {
        key(Qt::Key_M);
        find<QPushButton>("addBrush")->click();
        model().change("Exposure", [painted](Adjustments& edit) {
            edit.masks.back().exposure = 0.8;
            if (painted == 0) return;
            BrushStroke stroke;
            for (int point = 0; point < painted; ++point)
                stroke.points.push_back(
                    {0.5 + 0.3 * std::cos(point * 0.01), 0.3 + 0.2 * std::sin(point * 0.013)});
            edit.masks.back().components.back().strokes.push_back(stroke);
        });
        settleCanvas();
        Times times;
        const QPoint middle = canvas().rect().center();
        QTest::mousePress(&canvas(), Qt::LeftButton, {}, middle);
        for (int frame = 0; frame < frames_ + 5; ++frame) {
            const double turn = frame * 0.21, far = 100 + frame;
            const double ms = untilPainted([&] {
                sendMove(&canvas(), QPointF(middle) +
                                        QPointF(far * std::cos(turn), far * 0.6 * std::sin(turn)));
            });
            if (frame >= 5) times.milliseconds.push_back(ms);
        }
        QTest::mouseRelease(&canvas(), Qt::LeftButton, {}, middle);
        model().removeAllMasks();
        key(Qt::Key_M);
        settleCanvas();
        return times;
    }
    void measure(PixelSize size, bool raw) {
        const auto at = photo(raw);
        if (!at) return;
        const bool large = size.width > 1920;
        const QString place =
            QString("%1 x %2 %3: ").arg(size.width).arg(size.height).arg(raw ? "RAW" : "picture");
        openPhoto(*at);
        setCanvasSize(size);
        model().change("Edit", [](Adjustments& edit) { edit = test::typical(); });
        settleCanvas();
        if (only_ == "brush") {
            printRow(place + "pointer to paint", painting(0), never, 33);
            return;
        }
        const double p50 = large ? 33 : 20, p99 = large ? never : 40;
        const Times finishing = dragging(row("vibrance"));
        printRow(place + "drag a finishing slider", finishing, p50, p99);
        const Times early = dragging(row("exposure"));
        printRow(place + "drag exposure", early, p50, p99);
        printHistogram(early);
        const auto [sharp, settled] = afterChanges();
        printRow(place + "full-quality frame", sharp, 150, never);
        printRow(place + "settled as an export is", settled, 150, never);
        printRow(place + "pointer to paint", painting(0), never, 33);
        printRow(place + "pointer to paint, 4,000 points there", painting(4000), never, 33);
        std::printf("%-52s %.0f MiB (1536)\n", qPrintable(place + "resident memory"),
                    residentMegabytes());
        model().revertToOriginal();
        settleSaving();
        library->closeEditor();
        settle();
    }
    void opening() {
        openPhoto(0);
        setCanvasSize({1920, 1200});
        library->closeEditor();
        settle();
        for (const bool raw : {true, false}) {
            Times first, preview, full;
            const auto& photos = library->view().get()->photos;
            for (std::size_t at = 0; at < std::min<std::size_t>(photos.size(), 12); ++at) {
                if (photos[at]->isRaw != raw) continue;
                render->sessions().forgetAll();
                QElapsedTimer clock;
                clock.start();
                const std::uint64_t before = canvas().askedCount();
                hasPicture_ = false;
                library->openEditor(PhotoUrl(photos[at]->url));
                until([&] { return hasPicture_; }); // the grid's, until the photo's own comes
                first.milliseconds.push_back(double(clock.nsecsElapsed()) / 1e6);
                until([&] { return shown_.asked > before; });
                preview.milliseconds.push_back(double(clock.nsecsElapsed()) / 1e6);
                until([&] { return shown_.asked > before && shown_.stage >= ViewStage::fit; });
                full.milliseconds.push_back(double(clock.nsecsElapsed()) / 1e6);
                settleCanvas();
                library->closeEditor();
                settle();
            }
            const QString kind = raw ? "RAW" : "picture";
            printRow("open " + kind + ": something on the canvas", first, 100, never);
            printRow("open " + kind + ": a picture of its own", preview, never, never);
            printRow("open " + kind + ": fit-to-view development", full, 200, never);
        }
        openPhoto(0);
        Times next;
        for (int step = 0; step < 10 && library->neighbour(1); ++step) {
            settleCanvas();
            QTest::qWait(3000); // as long as one looks at a photo: the next one is prepared
            QElapsedTimer clock;
            clock.start();
            const std::uint64_t before = canvas().askedCount();
            key(Qt::Key_Right);
            until([&] { return shown_.asked > before && shown_.stage >= ViewStage::fit; });
            next.milliseconds.push_back(double(clock.nsecsElapsed()) / 1e6);
        }
        printRow("next photo, prepared", next, 33, never);
        library->closeEditor();
        settle();
    }
    // 300 strokes of a thousand points, taken back one by one.
    void undoing() {
        constexpr int strokes = 300, points = 1000;
        openPhoto(photo(true).value_or(0));
        key(Qt::Key_M);
        find<QPushButton>("addBrush")->click();
        settleCanvas();
        const double before = residentMegabytes();
        for (int at = 0; at < strokes; ++at) {
            BrushStroke stroke;
            stroke.radius = 0.02;
            for (int point = 0; point < points; ++point)
                stroke.points.push_back({0.5 + 0.4 * std::cos(point * 0.01 + at),
                                         0.3 + 0.001 * at * std::sin(point * 0.02)});
            model().change("Paint", [&](Adjustments& edit) {
                edit.masks.back().components.back().strokes.push_back(stroke);
            });
        }
        settleCanvas();
        settleSaving();
        const double painted = residentMegabytes();
        Times times;
        for (int step = 0; step < std::min(frames_, strokes); ++step)
            times.milliseconds.push_back(untilPainted([&] { model().undo(); }));
        printRow("undo one of 300 painted strokes", times, 60, never);
        std::printf("300 steps of strokes of %d points: %.0f MiB more, %.0f MiB resident (1536)\n",
                    points, painted - before, painted);
        model().removeAllMasks();
        key(Qt::Key_M);
        settleCanvas();
        settleSaving();
        library->closeEditor();
        settle();
    }
    Holdings holdings() const {
        Holdings now;
        const struct mallinfo2 heap = ::mallinfo2();
        const auto mega = [](std::size_t bytes) { return double(bytes) / (1 << 20); };
        now.used = mega(heap.uordblks + heap.hblkhd);
        now.unused = mega(heap.fordblks);
        now.sessions = mega(render->sessions().bytes());
        now.analyses = mega(render->analyses().memoryBytes());
        now.thumbnails = mega(render->thumbnails().memoryBytes());
        return now;
    }
    // From photo to photo as the arrow key goes. Memory may rise until the caches are full and not
    // after: the second half of the walk tells.
    void walking() {
        shown_ = {};
        openPhoto(0);
        std::printf("%6s %9s %10s %6s %6s %7s %9s %9s %10s  MiB\n", "photo", "resident",
                    "lazy free", "spare", "used", "unused", "sessions", "analyses", "thumbnails");
        const int lap = std::max(1, walk_ / 20);
        double early = 0, late = 0;
        for (int step = 1; step <= walk_; ++step) {
            if (library->neighbour(1)) {
                key(Qt::Key_Right);
                settleCanvas();
            } else {
                openPhoto(0);
            }
            if (step % lap != 0) continue;
            double& most = step <= walk_ / 2 ? early : late;
            most = std::max(most, residentMegabytes());
            const Holdings now = holdings();
            std::printf("%6d %9.0f %10.0f %6.0f %6.0f %7.0f %9.0f %9.0f %10.0f\n", step,
                        now.resident, now.lazilyFree, now.spare, now.used, now.unused, now.sessions,
                        now.analyses, now.thumbnails);
            std::fflush(stdout);
        }
        std::printf("at most %.0f MiB in the first half, %.0f MiB in the second (no growth), "
                    "1536 allowed\n",
                    early, late);
    }

    std::string folder_;
    int frames_, walk_;
    QString only_;      // of the measurements
    CanvasFrame shown_; // on the canvas
    bool hasPicture_ = false;
};

} // namespace
} // namespace kelvaro

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments().mid(1);
    if (arguments.isEmpty()) {
        std::fputs("usage: bench_ui_editor PHOTOS [--frames 200] [--walk 200]\n", stderr);
        return 2;
    }
    const auto option = [&](const char* name, int otherwise) {
        const auto at = arguments.indexOf(name);
        return at < 0 ? otherwise : arguments.value(at + 1).toInt();
    };
    const auto only = arguments.indexOf("--only");
    kelvaro::EditorBench(arguments[0], option("--frames", 200), option("--walk", 200),
                         only < 0 ? QString() : arguments.value(only + 1))
        .run();
    return 0;
}
