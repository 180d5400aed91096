// The window with a photo open in the editor, and what a hand does there.
#pragma once

#include "ui/WindowScene.h"
#include "ui/editor/LargestDifference.h"

#include <cmath>

namespace kelvaro {

class EditorScene : public WindowScene {
public:
    EditorPage& editor() const { return window->editor(); }
    EditorCanvas& canvas() const { return editor().canvas(); }
    EditorModel& model() const { return editor().model(); }

    // Photos of 600 × 400 with a ramp, colours, and a patch that would be grey but for a warm cast.
    std::filesystem::path colourfulPhotos(int count) {
        const auto folder = root.path() / "Shoot";
        std::filesystem::create_directories(folder);
        for (int at = 1; at <= count; ++at) {
            QImage image(600, 400, QImage::Format_RGB32);
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x)
                    image.setPixel(x, y,
                                   qRgb(30 + x * 190 / 600, 40 + y * 150 / 400,
                                        60 + (x + y + at * 40) % 600 * 140 / 600));
            }
            for (int y = 150; y < 250; ++y) {
                for (int x = 250; x < 350; ++x)
                    image.setPixel(x, y, qRgb(150, 128, 104));
            }
            const auto file = folder / ("IMG_" + std::to_string(at) + ".png");
            EXPECT_TRUE(image.save(QString::fromStdString(file.string())));
        }
        return std::filesystem::canonical(folder);
    }

    void openEditor(int count = 3, std::size_t which = 0) {
        const auto folder = colourfulPhotos(count);
        settings.set("folders", std::vector<std::string>{folder.string()});
        open();
        until([&] { return shown() == static_cast<std::size_t>(count); });
        openPhoto(which);
    }
    void openPhoto(std::size_t which) {
        library->openEditor(PhotoUrl(library->view().get()->photos[which]->url));
        settleCanvas();
    }
    PhotoUrl openUrl() const { return *library->openPhoto().get(); }

    // The photo is drawn as it is to stay.
    void settleCanvas() {
        until([&] {
            return canvas().isVisible() && canvas().isFactual() && canvas().isSettled() &&
                   canvas().frame().stage != ViewStage::preview;
        });
        QApplication::processEvents();
    }
    // Its edit is in the library and on the disk.
    void settleSaving() {
        until([&] { return model().isSaved() && library->isIdle(); });
    }

    void key(Qt::Key key, Qt::KeyboardModifiers held = {}) {
        QWidget* receiver = QApplication::focusWidget();
        QTest::keyClick(receiver ? receiver : window.get(), key, held);
        QApplication::processEvents();
    }
    void drag(QWidget* widget, QPoint from, QPoint to, Qt::KeyboardModifiers held = {}) {
        QTest::mousePress(widget, Qt::LeftButton, held, from);
        for (int step = 1; step <= 8; ++step) {
            const QPointF at = QPointF(from) + QPointF(to - from) * step / 8;
            sendMove(widget, at, held);
            QApplication::processEvents();
        }
        QTest::mouseRelease(widget, Qt::LeftButton, held, to);
        QApplication::processEvents();
    }
    // With the button down, which QTest's moves leave out.
    static void sendMove(QWidget* widget, QPointF at, Qt::KeyboardModifiers held = {}) {
        QMouseEvent move(QEvent::MouseMove, at, widget->mapToGlobal(at), Qt::NoButton,
                         Qt::LeftButton, held);
        QApplication::sendEvent(widget, &move);
    }
    // A point of the photo (pixels, y down from its upper edge) on the canvas.
    QPoint onCanvas(double x, double y) const {
        const auto place =
            PhotoPlacement::ofPicture(canvas().view(), model().edit(), model().photo().size);
        const Point at = place.toView(Point{x, model().photo().size.height - y});
        return QPointF(at.x, at.y).toPoint();
    }
    SliderRow* row(const char* id) const { return editor().inspector().row(id); }
};

} // namespace kelvaro
