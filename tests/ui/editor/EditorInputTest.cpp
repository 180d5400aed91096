// Pens, pinches, floods of events, and what the window keeps of how it is set up.
#include "ui/editor/EditorScene.h"

#include <QHelpEvent>
#include <QNativeGestureEvent>
#include <QPointingDevice>
#include <QPushButton>
#include <QTabletEvent>
#include <QToolTip>

namespace kelvaro {
namespace {

class EditorInput : public testing::Test, public EditorScene {
protected:
    void sendPen(QEvent::Type type, QPointF at, double pressure) {
        static const QPointingDevice device(
            "pen", 7, QInputDevice::DeviceType::Stylus, QPointingDevice::PointerType::Pen,
            QInputDevice::Capability::Position | QInputDevice::Capability::Pressure, 1, 2);
        const auto held = type == QEvent::TabletRelease ? Qt::NoButton : Qt::LeftButton;
        QTabletEvent event(type, &device, at, canvas().mapToGlobal(at), pressure, 0, 0, 0, 0, 0,
                           Qt::NoModifier, Qt::LeftButton, held);
        QApplication::sendEvent(&canvas(), &event);
        EXPECT_TRUE(event.isAccepted());
    }
    const std::vector<BrushStroke>& strokes() const {
        return model().edit().masks.at(0).components.at(0).strokes;
    }
    void beginBrush() {
        key(Qt::Key_M);
        find<QPushButton>("addBrush")->click();
    }
};

TEST_F(EditorInput, PaintsWithAPenThatTellsNoPressure) {
    openEditor(1);
    beginBrush();
    sendPen(QEvent::TabletPress, onCanvas(100, 100), 0);
    for (int step = 1; step <= 10; ++step)
        sendPen(QEvent::TabletMove, onCanvas(100 + 30 * step, 100), 0);
    sendPen(QEvent::TabletRelease, onCanvas(400, 100), 0);
    ASSERT_EQ(strokes().size(), 1u);
    EXPECT_EQ(strokes()[0].flow, 100);
    EXPECT_GT(strokes()[0].points.size(), 8u);
    EXPECT_FALSE(model().isChanging());
}

TEST_F(EditorInput, PaintsWeakerWhereAPenPressesLess) {
    openEditor(1);
    beginBrush();
    sendPen(QEvent::TabletPress, onCanvas(100, 100), 0.9);
    sendPen(QEvent::TabletMove, onCanvas(200, 100), 0.3);
    sendPen(QEvent::TabletMove, onCanvas(300, 100), 0); // is lifted
    sendPen(QEvent::TabletRelease, onCanvas(300, 100), 0);
    ASSERT_EQ(strokes().size(), 3u);
    EXPECT_NEAR(strokes()[0].flow, 90, 1e-6);
    EXPECT_NEAR(strokes()[1].flow, 30, 1e-6);
    EXPECT_LT(strokes()[2].flow, 10);
    model().undo();
    EXPECT_TRUE(strokes().empty()); // one step
}

TEST_F(EditorInput, PinchesAboutTheFingers) {
    openEditor(1);
    canvas().zoomTo(CanvasView::Zoom::twice);
    settleCanvas();
    const QPointF at = canvas().rect().center() + QPointF(70, 40);
    const Point held = canvas().view().toPicture({at.x(), at.y()});
    for (const double step : {0.2, 0.25}) {
        QNativeGestureEvent pinch(Qt::ZoomNativeGesture, QPointingDevice::primaryPointingDevice(),
                                  2, at, at, canvas().mapToGlobal(at), step, {});
        QApplication::sendEvent(&canvas(), &pinch);
    }
    EXPECT_NEAR(canvas().view().scale(), 2 * 1.2 * 1.25, 1e-9);
    const Point now = canvas().view().toPicture({at.x(), at.y()});
    EXPECT_NEAR(now.x, held.x, 0.5);
    EXPECT_NEAR(now.y, held.y, 0.5);
    settleCanvas();
}

// A mouse that sends a thousand events a second: no more frames are asked for than are drawn, no
// point of the path is lost, and the last event is on the canvas in the end.
TEST_F(EditorInput, KeepsUpWithAMouseOfAThousandEventsASecond) {
    openEditor(1);
    beginBrush();
    model().change("Exposure", [](Adjustments& edit) { edit.masks.back().exposure = 1; });
    settleCanvas();
    const std::uint64_t before = canvas().askedCount();
    int painted = 0;
    canvas().onPainted = [&](const CanvasFrame&) { ++painted; };
    const QPointF from = onCanvas(50, 300);
    QTest::mousePress(&canvas(), Qt::LeftButton, {}, from.toPoint());
    constexpr int events = 1500;
    for (int event = 1; event <= events; ++event) {
        sendMove(&canvas(), from + QPointF(event * 0.3, 20 * std::sin(event * 0.02)));
        if (event % 10 == 0) QApplication::processEvents();
    }
    QTest::mouseRelease(&canvas(), Qt::LeftButton, {}, (from + QPointF(events * 0.3, 0)).toPoint());
    settleCanvas();
    EXPECT_LT(canvas().askedCount() - before, std::uint64_t(events) / 2);
    EXPECT_GT(painted, 0);
    const auto place =
        PhotoPlacement::ofPicture(canvas().view(), model().edit(), model().photo().size);
    const MaskPoint last = strokes().back().points.back();
    const Point seen = place.toView(last);
    EXPECT_NEAR(seen.x, from.x() + events * 0.3, 4);
}

// A single click on a value opens a field, or the popover, right where the second one lands.
TEST_F(EditorInput, ADoubleClickOnARowOrItsValueSetsItToZero) {
    openEditor(1);
    const auto doubleClick = [&](SliderRow* row, QPoint at) {
        QTest::mouseDClick(window->windowHandle(), Qt::LeftButton, {},
                           row->mapTo(window.get(), at));
        QApplication::processEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    for (const char* id : {"temperature", "tint", "exposure"}) {
        SliderRow* row = this->row(id);
        for (const QPoint at : {row->valueRect().center() + QPoint(30, 0), QPoint(60, 30)}) {
            row->setFocus();
            key(Qt::Key_End);
            row->finish();
            ASSERT_NE(row->row().value, 0) << id;
            doubleClick(row, at);
            EXPECT_EQ(row->row().value, 0) << id;
            EXPECT_EQ(row->findChild<QLineEdit*>("valueField", Qt::FindDirectChildrenOnly), nullptr)
                << id;
            EXPECT_FALSE(editor().kelvinPopover().isVisible());
        }
    }
}

TEST_F(EditorInput, SaysWhatAClickOnTheTemperatureDoes) {
    openEditor(1);
    SliderRow* row = this->row("temperature");
    for (const auto& [at, text] :
         {std::pair{row->valueRect().center(), QString("Click to enter a temperature in Kelvin")},
          std::pair{QPoint(20, 30), row->toolTip()}}) {
        QHelpEvent help(QEvent::ToolTip, at, row->mapToGlobal(at));
        QApplication::sendEvent(row, &help);
        EXPECT_EQ(QToolTip::text(), text);
    }
    QToolTip::hideText();
}

// Only the brush's part of the canvas is drawn anew, and in the end it is what a fresh start shows.
TEST_F(EditorInput, ShowsWhatIsPaintedAsAFreshStartDoes) {
    openEditor(1);
    window->resize(800, 560); // the photo reduced
    beginBrush();
    model().change("Exposure", [](Adjustments& edit) {
        edit.masks.back().exposure = -1;
        edit.vignette = -50;
    });
    settleCanvas();
    QTest::mousePress(&canvas(), Qt::LeftButton, {}, onCanvas(60, 60));
    int parts = 0;
    canvas().onPainted = [&](const CanvasFrame& frame) { parts += frame.isPart; };
    for (int step = 1; step <= 40; ++step) {
        const std::uint64_t before = canvas().askedCount();
        sendMove(&canvas(), QPointF(onCanvas(60 + 12 * step, 60 + 8 * step)));
        until([&] { return canvas().frame().asked > before; });
    }
    EXPECT_GT(parts, 20);
    QTest::mouseRelease(&canvas(), Qt::LeftButton, {}, onCanvas(540, 380));
    key(Qt::Key_Escape); // no brush at the pointer
    settleCanvas();
    const QImage shown = canvas().grab().toImage();
    settleSaving();
    library->closeEditor();
    settle();
    render->sessions().forgetAll();
    openPhoto(0);
    EXPECT_EQ(largestDifference(canvas().grab().toImage(), shown), 0);
}

TEST_F(EditorInput, RemembersWhichPanelsAreFolded) {
    openEditor(1);
    const auto basic = [&] { return editor().inspector().panel(AdjustmentSpec::Group::basic); };
    EXPECT_FALSE(basic()->isFolded());
    QTest::mouseClick(basic()->heading(), Qt::LeftButton);
    EXPECT_TRUE(basic()->isFolded());
    end();
    open(); // the next start
    EXPECT_TRUE(basic()->isFolded());
    EXPECT_FALSE(editor().inspector().panel(AdjustmentSpec::Group::effects)->isFolded());
    QTest::mouseClick(basic()->heading(), Qt::LeftButton);
    EXPECT_TRUE(settings.get<std::vector<std::string>>("foldedPanels")->empty());
}

TEST_F(EditorInput, ShowsNoticesAboveThePhotoBar) {
    openEditor(3);
    key(Qt::Key_C);
    library->showNotice("Straightened +1.5°");
    const auto* pill = find<QWidget>("noticePill");
    ASSERT_TRUE(pill->isVisible());
    const QRect place(pill->mapTo(window.get(), QPoint()), pill->size());
    const QRect photos(canvas().mapTo(window.get(), QPoint()), canvas().size());
    EXPECT_TRUE(photos.contains(place));
    EXPECT_NEAR(place.center().x(), photos.center().x(), 1);
}

} // namespace
} // namespace kelvaro
