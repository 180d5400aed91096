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

// Frames go on while caches are emptied under a drag, and what stays is the picture that a fresh
// start shows.
// A mask that somebody painted for long, and all of it taken back step by step and done again.
TEST_F(EditorTrouble, SavesManyLargeStrokes) {
    openEditor(1);
    constexpr int strokes = 60, points = 1000;
    SeededRandom random;
    model().change("Brush", [&](Adjustments& edit) {
        addMask(edit, MaskComponent::Kind::brush, model().photo().size, random);
        edit.masks.back().exposure = 0.5;
    });
    for (int at = 0; at < strokes; ++at) {
        model().change("Paint", [&](Adjustments& edit) {
            BrushStroke& stroke = edit.masks.back().components.back().strokes.emplace_back();
            for (int point = 0; point < points; ++point)
                stroke.points.push_back({0.5 + 0.4 * std::cos(point * 0.01 + at),
                                         0.3 + 0.001 * at * std::sin(point * 0.02)});
        });
        QApplication::processEvents();
    }
    const Adjustments painted = model().edit();
    settleSaving();
    EXPECT_EQ(model().saveProblem(), "");
    PosixFileSystem files;
    const auto stored = [&] {
        return Sidecar(files, random).loadPhoto(shoot() / fileNameOf(openUrl()));
    };
    EXPECT_TRUE(stored()->value().adjustments == painted);
    while (model().canUndo())
        model().undo();
    settleSaving();
    EXPECT_FALSE(stored()->has_value());
    while (model().canRedo())
        model().redo();
    settleSaving();
    EXPECT_TRUE(stored()->value().adjustments == painted);
}

TEST_F(EditorTrouble, GoesOnDrawingWhileMemoryIsShort) {
    openEditor(2);
    window->resize(800, 560); // the photo reduced
    settleCanvas();
    SliderRow* row = this->row("exposure");
    QTest::mousePress(row, Qt::LeftButton, {}, QPoint(150, 20));
    for (int step = 1; step <= 40; ++step) {
        const std::uint64_t before = canvas().askedCount();
        sendMove(row, QPointF(190 + step, 20));
        if (step % 4 == 0) {
            render->engine().pressure().post(step % 8 ? MemoryPressure::critical
                                                      : MemoryPressure::warning);
        }
        until([&] { return canvas().frame().asked > before; });
    }
    QTest::mouseRelease(row, Qt::LeftButton, {}, QPoint(230, 20));
    EXPECT_GT(model().edit().exposure, 0.5);
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
