// What goes wrong around an open photo: its file, its drive, memory, and quitting meanwhile.
#include "editor/MaskList.h"
#include "fakes/SeededRandom.h"
#include "platform/system/PosixFileSystem.h"
#include "recipe/Sidecar.h"
#include "ui/editor/EditorScene.h"

namespace kelvaro {
namespace {

class EditorTrouble : public testing::Test, public EditorScene {
protected:
    std::filesystem::path shoot() const { return root.path() / "Shoot"; }
    std::filesystem::path sidecar() const {
        return shoot() / ".tarnwell" / (std::string(fileNameOf(openUrl())) + ".json");
    }
    void exposed(double stops) {
        model().change("Exposure", [=](Adjustments& edit) { edit.exposure = stops; });
    }
    // The folder is away, as with a drive that was pulled out.
    void unplug() {
        std::filesystem::rename(shoot(), root / "away");
        library->rescanAll();
        settle();
        until([&] { return model().presence() == PhotoPresence::unplugged; });
    }
    void plugIn() {
        std::filesystem::rename(root / "away", shoot());
        library->rescanAll();
        settle();
    }
};

TEST_F(EditorTrouble, ShowsAPhotoThatWasReplacedAndKeepsItsEdit) {
    openEditor(2);
    exposed(1);
    settleSaving();
    QImage other(300, 500, QImage::Format_RGB32);
    other.fill(QColor(20, 90, 30));
    ASSERT_TRUE(other.save(QString::fromStdString(openUrl()), "PNG"));
    library->rescanAll();
    settle();
    until([&] { return canvas().photoSize() == PixelSize{300, 500} && canvas().isSettled(); });
    EXPECT_TRUE(window->noticeText().contains("was replaced")) << qPrintable(window->noticeText());
    EXPECT_EQ(model().edit().exposure, 1);
    const QColor seen = canvas().grab().toImage().pixelColor(canvas().rect().center());
    EXPECT_GT(seen.green(), seen.red() + 20);
    EXPECT_GT(seen.green(), seen.blue() + 20);
    exposed(0);
    settleSaving();
}

TEST_F(EditorTrouble, SavesOnceAnUnpluggedDriveIsBack) {
    openEditor(2);
    const auto file = sidecar();
    unplug();
    EXPECT_TRUE(window->noticeText().contains("drive of")) << qPrintable(window->noticeText());
    exposed(1.5);
    until([&] { return !model().saveProblem().empty(); });
    EXPECT_EQ(model().edit().exposure, 1.5);
    EXPECT_EQ(find<QLabel>("savingState")->text(), "Not saved yet");
    plugIn();
    until([&] { return model().isSaved(); });
    settleSaving();
    library->waitForWrites();
    EXPECT_TRUE(std::filesystem::exists(file));
    EXPECT_EQ(library->edit(openUrl())->exposure, 1.5);
    EXPECT_EQ(model().presence(), PhotoPresence::here);
}

// A mask that somebody painted for long, and all of it taken back step by step and done again:
// every step is its own, on the canvas and on the disk.
TEST_F(EditorTrouble, SavesManyLargeStrokes) {
    openEditor(1);
    constexpr std::size_t strokes = 60, points = 1000;
    const QImage unpainted = canvas().grab().toImage();
    SeededRandom random;
    model().change("Brush", [&](Adjustments& edit) {
        addMask(edit, MaskComponent::Kind::brush, model().photo().size, random);
        edit.masks.back().exposure = 0.5;
    });
    const auto point = [](std::size_t stroke, std::size_t at) {
        return MaskPoint{0.5 + 0.4 * std::cos(double(at) * 0.01 + double(stroke)),
                         0.3 + 0.001 * double(stroke) * std::sin(double(at) * 0.02)};
    };
    for (std::size_t at = 0; at < strokes; ++at) {
        model().change("Paint", [&](Adjustments& edit) {
            BrushStroke& stroke = edit.masks.back().components.back().strokes.emplace_back();
            for (std::size_t in = 0; in < points; ++in)
                stroke.points.push_back(point(at, in));
        });
        QApplication::processEvents();
    }
    // What the hand painted so far, whole.
    const auto expectPainted = [&](const Adjustments& edit, std::size_t count) {
        ASSERT_EQ(edit.masks.size(), 1u);
        const auto& painted = edit.masks[0].components.back().strokes;
        ASSERT_EQ(painted.size(), count);
        for (std::size_t at = 0; at < count; ++at) {
            ASSERT_EQ(painted[at].points.size(), points) << at;
            for (const std::size_t in : {std::size_t(0), points / 2, points - 1})
                ASSERT_EQ(painted[at].points[in], point(at, in)) << at;
        }
    };
    settleSaving();
    EXPECT_EQ(model().saveProblem(), "");
    PosixFileSystem files;
    const auto stored = [&] {
        return Sidecar(files, random).loadPhoto(shoot() / fileNameOf(openUrl()));
    };
    ASSERT_NO_FATAL_FAILURE(expectPainted(model().edit(), strokes));
    ASSERT_TRUE(stored()->has_value());
    ASSERT_NO_FATAL_FAILURE(expectPainted(stored()->value().adjustments, strokes));
    settleCanvas();
    const QImage painted = canvas().grab().toImage();
    EXPECT_GT(largestDifference(painted, unpainted), 20);
    for (std::size_t left = strokes; left-- > 0;) {
        model().undo();
        ASSERT_NO_FATAL_FAILURE(expectPainted(model().edit(), left)) << left;
    }
    model().undo(); // the mask
    EXPECT_FALSE(model().canUndo());
    EXPECT_EQ(model().edit(), Adjustments());
    settleSaving();
    EXPECT_FALSE(stored()->has_value());
    settleCanvas();
    EXPECT_EQ(largestDifference(canvas().grab().toImage(), unpainted), 0);
    model().redo();
    for (std::size_t count = 1; count <= strokes; ++count) {
        model().redo();
        ASSERT_NO_FATAL_FAILURE(expectPainted(model().edit(), count)) << count;
    }
    EXPECT_FALSE(model().canRedo());
    settleSaving();
    ASSERT_TRUE(stored()->has_value());
    ASSERT_NO_FATAL_FAILURE(expectPainted(stored()->value().adjustments, strokes));
    settleCanvas();
    EXPECT_EQ(largestDifference(canvas().grab().toImage(), painted), 0);
}

// Of a picture as it is drawn, in steps of 8 bits.
double averageGreen(const QImage& image) {
    double sum = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            sum += qGreen(image.pixel(x, y));
    }
    return sum / std::max(1, image.width() * image.height());
}

// Caches are emptied under a drag: each frame still follows the hand, what was emptied is made
// again, and what stays is the picture that a fresh start shows.
TEST_F(EditorTrouble, GoesOnDrawingWhileMemoryIsShort) {
    openEditor(2);
    window->resize(800, 560); // the photo reduced
    settleCanvas();
    const auto session = render->sessions().session(std::filesystem::path(openUrl()));
    ASSERT_TRUE(session);
    const auto made = [&] { return (*session)->counts().reductions; };
    const auto madeBefore = made();
    SliderRow* row = this->row("exposure");
    QTest::mousePress(row, Qt::LeftButton, {}, QPoint(150, 20));
    double light = 0;
    int short_ = 0;
    for (int step = 1; step <= 40; ++step) {
        const std::uint64_t before = canvas().askedCount();
        if (step % 4 == 0) {
            render->engine().pressure().post(step % 8 ? MemoryPressure::critical
                                                      : MemoryPressure::warning);
            ++short_;
        }
        sendMove(row, QPointF(190 + step, 20));
        until([&] { return canvas().frame().asked > before; });
        const double shown = averageGreen(canvas().frame().image);
        EXPECT_GT(shown, light) << "step " << step;
        light = shown;
    }
    QTest::mouseRelease(row, Qt::LeftButton, {}, QPoint(230, 20));
    EXPECT_GT(model().edit().exposure, 0.5);
    EXPECT_GE(made() - madeBefore, short_);
    settleCanvas();
    const QImage afterDrag = canvas().grab().toImage();
    settleSaving();
    render->engine().pressure().post(MemoryPressure::normal);
    openPhoto(1);
    render->sessions().forgetAll();
    openPhoto(0);
    EXPECT_EQ(largestDifference(canvas().grab().toImage(), afterDrag), 0);
}

// An edit that no disk has yet holds up quitting.
TEST_F(EditorTrouble, AsksBeforeQuittingWithAnEditThatCannotBeSaved) {
    openEditor(1);
    const auto file = sidecar();
    unplug();
    exposed(2);
    until([&] { return !model().saveProblem().empty(); });
    window->close();
    settle();
    until([&] { return !script.asked.empty(); });
    EXPECT_TRUE(window->isVisible()); // the harmless answer
    ASSERT_EQ(script.asked.size(), 1u);
    EXPECT_EQ(script.asked[0].name, "quit");
    plugIn();
    until([&] { return editing->saver().isAllSaved(); });
    settle();
    library->waitForWrites();
    EXPECT_TRUE(std::filesystem::exists(file));
    window->close();
    until([&] { return !window->isVisible(); });
    EXPECT_EQ(script.asked.size(), 1u);
}

} // namespace
} // namespace kelvaro
