// A photo is edited with real clicks and keys, copied to others and exported; what leaves the
// program is what the canvas showed.
#include "export/ExportSettings.h"
#include "ui/editor/EditorScene.h"

#include <QPushButton>
#include <QWheelEvent>

namespace kelvaro {
namespace {

class EditorWalk : public testing::Test, public EditorScene {
protected:
    QImage exported(const PhotoUrl& photo) {
        ExportSettings wanted = ExportSettings::load(settings, folders);
        wanted.format = ExportFormat::png;
        wanted.destination = (root / "out").string();
        wanted.save(settings);
        window->commands().action(CommandId::exportPhotos)->trigger();
        settle();
        find<QPushButton>("startExport")->click();
        until([&] { return !exporter->state().get().running; });
        const auto name = std::filesystem::path(photo).stem().string() + ".png";
        return QImage(QString::fromStdString((root / "out" / name).string()))
            .convertToFormat(QImage::Format_RGB32);
    }
    // What of the canvas is the picture, at one device pixel a photo pixel.
    QImage onScreen() {
        canvas().zoomTo(CanvasView::Zoom::actual);
        settleCanvas();
        const QRectF place = frameInView(canvas().frame(), canvas().view());
        return canvas().grab(place.toRect()).toImage().convertToFormat(QImage::Format_RGB32);
    }
};

TEST_F(EditorWalk, EditsCopiesAndExportsWhatTheCanvasShows) {
    openEditor(3);
    const PhotoUrl first = openUrl();

    // White balance by the picker: the patch becomes neutral.
    QTest::mouseClick(editor().inspector().pickButton(), Qt::LeftButton);
    ASSERT_TRUE(editor().isPicking());
    const QPoint patch = onCanvas(300, 200);
    QTest::mouseMove(&canvas(), patch);
    QTest::mouseClick(&canvas(), Qt::LeftButton, {}, patch);
    until([&] { return !editor().isPicking(); });
    settleCanvas();
    const QRgb grey = canvas().grab(QRect(patch, QSize(1, 1))).toImage().pixel(0, 0);
    EXPECT_NEAR(qRed(grey), qGreen(grey), 3);
    EXPECT_NEAR(qBlue(grey), qGreen(grey), 3);
    const Adjustments balanced = model().edit();
    EXPECT_LT(balanced.temperature, 0);

    // Exposure by dragging its row, and back by undo: one step.
    SliderRow* exposure = row("exposure");
    drag(exposure, {150, 20}, {190, 20});
    EXPECT_GT(model().edit().exposure, 0.5);
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(model().edit(), balanced);
    key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_GT(model().edit().exposure, 0.5);

    // A stroke of the brush, with an effect.
    key(Qt::Key_M);
    QTest::mouseClick(find<QPushButton>("addBrush"), Qt::LeftButton);
    drag(&canvas(), onCanvas(120, 100), onCanvas(260, 120));
    ASSERT_EQ(model().edit().masks.size(), 1u);
    ASSERT_EQ(model().edit().masks[0].components[0].strokes.size(), 1u);
    EXPECT_GT(model().edit().masks[0].components[0].strokes[0].points.size(), 4u);
    model().change("Exposure", [](Adjustments& edit) { edit.masks[0].exposure = 1; });

    // Crop to 4 : 5, straightened by 3 degrees.
    key(Qt::Key_C);
    ASSERT_EQ(editor().mode(), EditorPage::Mode::crop);
    find<QComboBox>("aspect")->setFocus();
    for (int down = 0; down < 3; ++down)
        key(Qt::Key_Down);
    EXPECT_EQ(find<QComboBox>("aspect")->currentText(), "4 : 5");
    SliderRow* straighten = editor().inspector().crop().straighten();
    QTest::mouseClick(straighten, Qt::LeftButton, {}, straighten->valueRect().center());
    auto* field = straighten->findChild<QLineEdit*>("valueField");
    ASSERT_NE(field, nullptr);
    QTest::keyClicks(field, "3");
    QTest::keyClick(field, Qt::Key_Return);
    canvas().setFocus();
    key(Qt::Key_Return);
    EXPECT_EQ(editor().mode(), EditorPage::Mode::adjust);
    EXPECT_EQ(model().edit().straighten, 3);
    const PixelSize picture = canvas().view().picture;
    EXPECT_NEAR(double(picture.width) / picture.height, 5.0 / 4, 0.01);

    // What is exported is what was on the canvas; twice in a row.
    settleCanvas();
    const QImage shown = onScreen();
    const QImage file = exported(first);
    ASSERT_FALSE(file.isNull());
    EXPECT_EQ(file.size(), QSize(picture.width, picture.height));
    EXPECT_LE(largestDifference(shown, file), 1);

    // Copied to the two others, which keep their own crop.
    canvas().setFocus();
    key(Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    const Adjustments copied = model().edit();
    settleSaving();
    key(Qt::Key_Escape);
    settle();
    const auto view = library->view().get();
    const auto& photos = view->photos;
    library->setSelection({photos[1]->url, photos[2]->url});
    until([&] { return window->commands().action(CommandId::pasteAdjustments)->isEnabled(); });
    EXPECT_EQ(window->commands().action(CommandId::pasteAdjustments)->text(),
              "Paste Adjustments to 2 Photos");
    key(Qt::Key_V, Qt::ControlModifier | Qt::ShiftModifier);
    settle();
    EXPECT_EQ(window->noticeText(), "Adjustments pasted to 2 photos");
    EXPECT_EQ(*library->pasteCount(), 1u);
    for (const std::size_t at : {1u, 2u}) {
        const Adjustments* pasted = library->edit(PhotoUrl(photos[at]->url));
        ASSERT_NE(pasted, nullptr);
        EXPECT_EQ(pasted->exposure, copied.exposure);
        EXPECT_EQ(pasted->masks, copied.masks);
        EXPECT_EQ(pasted->straighten, 0);
    }

    // Reopened, the first shows exactly the same picture.
    openPhoto(0);
    EXPECT_EQ(largestDifference(onScreen(), shown), 0);
}

TEST_F(EditorWalk, LeavesNothingBehindWhenItLooksOnly) {
    openEditor(2);
    key(Qt::Key_Right);
    settleCanvas();
    key(Qt::Key_Escape);
    settle();
    library->waitForWrites();
    EXPECT_FALSE(std::filesystem::exists(root / "Shoot" / ".tarnwell"));
}

TEST_F(EditorWalk, KeepsABurstOfKeysOneStepAndSavesIt) {
    openEditor(1);
    row("contrast")->setFocus();
    for (int press = 0; press < 12; ++press)
        key(Qt::Key_Right);
    EXPECT_EQ(model().edit().contrast, 12);
    key(Qt::Key_Delete);
    key(Qt::Key_End);
    EXPECT_EQ(model().edit().contrast, 100);
    row("contrast")->finish();
    model().undo();
    EXPECT_EQ(model().edit().contrast, 0);
    model().redo();
    settleSaving();
    library->waitForWrites();
    EXPECT_TRUE(std::filesystem::exists(root / "Shoot" / ".tarnwell" / "IMG_1.png.json"));
}

TEST_F(EditorWalk, TakesKelvinInItsPopover) {
    openEditor(1);
    SliderRow* temperature = row("temperature");
    QTest::mouseClick(temperature, Qt::LeftButton, {}, temperature->valueRect().center());
    ASSERT_TRUE(editor().kelvinPopover().isVisible());
    QTest::keyClicks(editor().kelvinPopover().field(), "5000");
    QTest::keyClick(editor().kelvinPopover().field(), Qt::Key_Return);
    EXPECT_FALSE(editor().kelvinPopover().isVisible());
    // As shot is 6500 K for a finished picture.
    EXPECT_NEAR(model().edit().temperature, 1e6 / 6500 - 1e6 / 5000, 1e-9);
}

TEST_F(EditorWalk, ShowsTheOriginalWhileTheKeyIsDown) {
    openEditor(1);
    const QImage before = canvas().grab().toImage();
    model().change("Exposure", [](Adjustments& edit) { edit.exposure = 2; });
    settleCanvas();
    EXPECT_GT(largestDifference(canvas().grab().toImage(), before), 60);
    canvas().setFocus();
    QTest::keyPress(&canvas(), Qt::Key_Backslash);
    until([&] { return largestDifference(canvas().grab().toImage(), before) <= 1; });
    QTest::keyRelease(&canvas(), Qt::Key_Backslash);
    EXPECT_GT(largestDifference(canvas().grab().toImage(), before), 60);
}

// Esc gives a crop back as it was; Return keeps it.
TEST_F(EditorWalk, CropsByHandAndTakesItBack) {
    openEditor(1);
    for (const bool keeps : {false, true}) {
        canvas().setFocus();
        key(Qt::Key_C);
        settleCanvas();
        const auto crop = editor().cropCanvas()->tool().drawnCrop(canvas().view());
        ASSERT_TRUE(crop);
        const QPoint corner = QPointF(crop->maxX(), -crop->minY()).toPoint();
        drag(&canvas(), corner, corner - QPoint(120, 80));
        EXPECT_GT(model().edit().cropRight, 0.1);
        EXPECT_GT(model().edit().cropBottom, 0.1);
        canvas().setFocus();
        key(keeps ? Qt::Key_Return : Qt::Key_Escape);
        EXPECT_EQ(editor().mode(), EditorPage::Mode::adjust);
        EXPECT_EQ(model().edit().cropRight > 0, keeps);
    }
}

TEST_F(EditorWalk, DoesNotTouchAnEditOfANewerVersion) {
    const auto folder = colourfulPhotos(1);
    std::filesystem::create_directories(folder / ".tarnwell");
    const auto sidecar = folder / ".tarnwell" / "IMG_1.png.json";
    const std::string newer = R"({"processVersion": 99, "exposure": 1})";
    std::ofstream(sidecar) << newer;
    settings.set("folders", std::vector<std::string>{folder.string()});
    open();
    until([&] { return shown() == 1; });
    openPhoto(0);
    until([&] { return model().isReadOnly(); });
    EXPECT_EQ(find<QLabel>("readOnlyReason")->text(), "This edit needs a newer Kelvaro.");
    drag(row("exposure"), {150, 20}, {220, 20});
    EXPECT_EQ(model().edit().exposure, 0);
    key(Qt::Key_Escape);
    settle();
    library->waitForWrites();
    std::ifstream file(sidecar);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), newer);
}

TEST_F(EditorWalk, KeepsBothWhenAnotherProgramWroteTheSidecar) {
    openEditor(1);
    const auto folder = root / "Shoot" / ".tarnwell";
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "IMG_1.png.json") << R"({"processVersion": 12, "exposure": 3})";
    model().change("Contrast", [](Adjustments& edit) { edit.contrast = 40; });
    settleSaving();
    library->waitForWrites();
    bool isBeside = false;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        isBeside = isBeside || entry.path().filename().string().find("other") != std::string::npos;
    EXPECT_TRUE(isBeside);
    EXPECT_EQ(model().edit().contrast, 40);
    EXPECT_TRUE(window->noticeText().contains("IMG_1.png")) << window->noticeText().toStdString();
}

TEST_F(EditorWalk, ZoomsAboutThePointer) {
    openEditor(1);
    canvas().zoomTo(CanvasView::Zoom::twice);
    settleCanvas();
    const QPointF at = canvas().rect().center() + QPointF(90, -60);
    const Point held = canvas().view().toPicture({at.x(), at.y()});
    for (int notch = 0; notch < 3; ++notch) {
        QWheelEvent wheel(at, canvas().mapToGlobal(at), {}, {0, 120}, Qt::NoButton, Qt::NoModifier,
                          Qt::NoScrollPhase, false);
        QApplication::sendEvent(&canvas(), &wheel);
    }
    EXPECT_NEAR(canvas().view().scale(), 2 * std::exp2(0.75), 1e-6);
    const Point now = canvas().view().toPicture({at.x(), at.y()});
    EXPECT_NEAR(now.x, held.x, 0.5);
    EXPECT_NEAR(now.y, held.y, 0.5);
    settleCanvas();
}

// Events that come faster than frames: the last one is what is drawn.
TEST_F(EditorWalk, KeepsUpWithAThousandEvents) {
    openEditor(2);
    SliderRow* saturation = row("saturation");
    QTest::mousePress(saturation, Qt::LeftButton, {}, QPoint(150, 20));
    for (int event = 0; event < 3000; ++event)
        sendMove(saturation, QPointF(150 + 60 * std::sin(event * 0.01), 20));
    QTest::mouseRelease(saturation, Qt::LeftButton, {}, QPoint(150, 20));
    settleCanvas();
    const QImage afterDrag = canvas().grab().toImage();
    EXPECT_NE(model().edit().saturation, 0);
    settleSaving();
    openPhoto(1);
    openPhoto(0);
    EXPECT_EQ(largestDifference(canvas().grab().toImage(), afterDrag), 0);
    model().undo();
    EXPECT_EQ(model().edit().saturation, 0);
}

TEST_F(EditorWalk, KeepsTheEditOfAPhotoThatIsDeletedWhileItIsOpen) {
    openEditor(2);
    const auto sidecar =
        root / "Shoot" / ".tarnwell" / (std::string(fileNameOf(openUrl())) + ".json");
    std::filesystem::remove(openUrl());
    library->rescanAll();
    settle();
    until([&] { return model().presence() == PhotoPresence::deleted; });
    model().change("Exposure", [](Adjustments& edit) { edit.exposure = 1; });
    settleSaving();
    EXPECT_TRUE(std::filesystem::exists(sidecar));
    key(Qt::Key_Escape);
    settle();
    EXPECT_FALSE(library->isEditing());
}

TEST_F(EditorWalk, ShowsAPresetWhileThePointerRestsOnIt) {
    openEditor(1);
    Adjustments look;
    look.saturation = -100;
    ASSERT_TRUE(editing->presets().save("Grey", look, {}).has_value());
    const QImage before = canvas().grab().toImage();
    find<IconButton>("presetsButton")->click();
    until([&] { return editor().presetPopover().isVisible(); });
    QListWidget* list = editor().presetPopover().list();
    ASSERT_EQ(list->count(), 1);
    Q_EMIT list->itemEntered(list->item(0));
    settleCanvas();
    EXPECT_GT(largestDifference(canvas().grab().toImage(), before), 20);
    EXPECT_EQ(model().edit().saturation, 0);
    Q_EMIT list->itemClicked(list->item(0));
    EXPECT_EQ(model().edit().saturation, -100);
    EXPECT_FALSE(editor().presetPopover().isVisible());
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(model().edit().saturation, 0);
}

} // namespace
} // namespace kelvaro
