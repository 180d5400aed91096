// Draws the states of the editor into PNG files, for people to look at and for the documents:
//     editor_pictures PHOTOS OUTPUT [NAME]     a folder of photos (a copy: edits are written into
//                                              it), the folder to write into, the photo to open
// KELVARO_WINDOW_SIZE=1920x1080, KELVARO_LIGHT=1 and QT_SCALE_FACTOR=2 make the other variants.
#include "develop/Recipes.h"
#include "editor/MaskList.h"
#include "ui/editor/EditorScene.h"

#include <QDir>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>

#include <cstdio>

namespace kelvaro {
namespace {

class EditorPictures : public EditorScene {
public:
    EditorPictures(const QString& folder, QString output, QString name)
        : folder_(QDir(folder).canonicalPath().toStdString()),
          output_(std::move(output)),
          name_(std::move(name)) {
        QDir().mkpath(output_);
        desktop.wanted = {.prefersDark = !qEnvironmentVariableIsSet("KELVARO_LIGHT"),
                          .reducesMotion = true};
    }

    void draw() {
        settings.set("folders", std::vector<std::string>{folder_});
        open(true);
        const QStringList size = qEnvironmentVariable("KELVARO_WINDOW_SIZE", "1280x800").split('x');
        window->resize(size.at(0).toInt(), size.at(1).toInt());
        wait(1500);
        const auto& photos = library->view().get()->photos;
        std::size_t which = 0;
        for (std::size_t at = 0; at < photos.size(); ++at)
            if (photos[at]->url.find(name_.toStdString()) != std::string::npos) which = at;
        openPhoto(which);
        take("plain");
        drawAdjusting();
        drawCrop();
        drawMasks();
        drawComparing();
        drawPresets();
        drawReadOnly();
    }

private:
    void wait(int ms = 700) {
        settle();
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < ms)
            QApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 50);
    }
    void take(const QString& name) {
        wait();
        until([&] { return !canvas().isVisible() || canvas().isSettled(); });
        window->grab().save(output_ + "/editor-" + name + ".png");
        std::printf("%s\n", qPrintable(name));
        std::fflush(stdout);
    }
    void drawAdjusting() {
        model().change("Edit", [](Adjustments& edit) {
            edit = test::typical();
            edit.temperature = -18;
            edit.vignette = -20;
        });
        QTest::mouseMove(row("shadows"), QPoint(120, 20));
        take("adjusted");
        auto* scroll = find<QScrollArea>("panels");
        scroll->verticalScrollBar()->setValue(scroll->verticalScrollBar()->maximum());
        take("panels-below");
        scroll->verticalScrollBar()->setValue(0);
        editor().inspector().panel(AdjustmentSpec::Group::basic)->heading()->click();
        take("panel-folded");
        editor().inspector().panel(AdjustmentSpec::Group::basic)->heading()->click();
        SliderRow* temperature = row("temperature");
        QTest::mouseClick(temperature, Qt::LeftButton, {}, temperature->valueRect().center());
        take("kelvin");
        key(Qt::Key_Escape);
        editor().inspector().pickButton()->click();
        const QPoint middle = canvas().rect().center() + QPoint(60, 40);
        QTest::mouseMove(&canvas(), middle - QPoint(3, 3));
        QTest::mouseMove(&canvas(), middle);
        take("picker");
        key(Qt::Key_Escape);
        canvas().zoomTo(CanvasView::Zoom::actual);
        take("actual-size");
        canvas().zoomTo(CanvasView::Zoom::fit);
        library->requestInfo(openUrl());
        take("info");
        library->requestInfo(std::nullopt);
    }
    void drawCrop() {
        until([&] { return window->commands().action(CommandId::crop)->isEnabled(); });
        window->commands().action(CommandId::crop)->trigger();
        until([&] { return editor().cropCanvas() != nullptr; });
        settleCanvas();
        editor().cropCanvas()->tool().setAspect(Aspect::fourToFive);
        take("crop");
        const QPoint from = canvas().rect().center() + QPoint(canvas().width() / 2 - 30, 0);
        QTest::mousePress(&canvas(), Qt::LeftButton, {}, from);
        for (int step = 1; step <= 10; ++step) {
            sendMove(&canvas(), from + QPoint(-step, step * 5));
            QApplication::processEvents();
        }
        take("crop-turning");
        QTest::mouseRelease(&canvas(), Qt::LeftButton, {}, from + QPoint(-10, 50));
        take("crop-turned");
        key(Qt::Key_Escape);
        settleCanvas();
    }
    void drawMasks() {
        window->commands().action(CommandId::masks)->trigger();
        take("masks-none");
        find<QPushButton>("addLinear")->click();
        drag(&canvas(), onShare(0.42, 0.08), onShare(0.5, 0.46));
        model().change("Exposure", [](Adjustments& edit) {
            edit.masks.back().exposure = -0.8;
            edit.masks.back().temperature = -20;
        });
        take("mask-linear");
        find<QPushButton>("addRadial")->click();
        drag(&canvas(), onShare(0.12, 0.75), onShare(0.34, 0.92));
        window->commands().action(CommandId::maskOverlay)->trigger();
        take("mask-radial-overlay");
        find<QPushButton>("addBrush")->click();
        drag(&canvas(), onShare(0.6, 0.6), onShare(0.82, 0.72));
        drag(&canvas(), onShare(0.82, 0.76), onShare(0.6, 0.7));
        sendHover(onShare(0.7, 0.5));
        take("mask-brush-overlay");
        window->commands().action(CommandId::maskOverlay)->trigger();
        model().change("Mask", [](Adjustments& edit) {
            edit.masks.back().exposure = 0.7;
            edit.masks.back().clarity = 30;
        });
        take("mask-brush");
        key(Qt::Key_Escape);
    }
    void drawComparing() {
        find<IconButton>("splitButton")->click();
        take("split");
        find<IconButton>("splitButton")->click();
        model().change("Exposure", [](Adjustments& edit) { edit.exposure = 1.6; });
        window->commands().action(CommandId::toggleClipping)->trigger();
        take("clipping");
        window->commands().action(CommandId::toggleClipping)->trigger();
        model().undo();
        window->commands().action(CommandId::colourAssessment)->trigger();
        take("assessment");
        window->commands().action(CommandId::colourAssessment)->trigger();
    }
    void drawPresets() {
        for (const char* name : {"Evening", "Harbour, cool", "Portrait"})
            EXPECT_TRUE(editing->presets().save(name, model().edit(), {}).has_value());
        find<IconButton>("presetsButton")->click();
        take("presets");
        key(Qt::Key_Escape);
    }
    void drawReadOnly() {
        settleSaving();
        library->waitForWrites();
        key(Qt::Key_Escape);
        settle();
        const std::filesystem::path photo = library->view().get()->photos.front()->url;
        std::filesystem::create_directories(photo.parent_path() / ".tarnwell");
        std::ofstream(photo.parent_path() / ".tarnwell" / (photo.filename().string() + ".json"))
            << R"({"processVersion": 99})";
        openPhoto(0);
        take("newer-version");
    }
    QPoint onShare(double x, double y) const {
        const PixelSize size = model().photo().size;
        return onCanvas(x * size.width, y * size.height);
    }
    void sendHover(QPoint at) {
        QMouseEvent move(QEvent::MouseMove, QPointF(at), canvas().mapToGlobal(QPointF(at)),
                         Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(&canvas(), &move);
    }

    std::string folder_;
    QString output_, name_;
};

} // namespace
} // namespace kelvaro

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM") && !qEnvironmentVariableIsSet("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments().mid(1);
    if (arguments.size() < 2) {
        std::fputs("usage: editor_pictures PHOTOS OUTPUT [NAME]\n", stderr);
        return 2;
    }
    kelvaro::EditorPictures(arguments[0], arguments[1], arguments.value(2)).draw();
    return 0;
}
