// One session from an empty library to the question before quitting, with nothing but clicks and
// keys on what is on the screen.
#include "ui/WindowScene.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QPushButton>

namespace kelvaro {
namespace {

class Session : public testing::Test, public WindowScene {
protected:
    void click(QWidget* widget) {
        ASSERT_NE(widget, nullptr);
        ASSERT_TRUE(widget->isVisible()) << widget->objectName().toStdString();
        QTest::mouseClick(widget, Qt::LeftButton);
        settle();
    }
    void click(const char* name) { click(find<QWidget>(name)); }
    void press(Qt::Key key, Qt::KeyboardModifiers held = {}) {
        QWidget* receiver = QApplication::focusWidget();
        QTest::keyClick(receiver ? receiver : window.get(), key, held);
        settle();
    }
    void type(const QString& text) {
        for (const QChar& letter : text)
            QTest::keyClick(QApplication::focusWidget(), letter.toLatin1());
        settle();
    }
    void clickCell(int index, Qt::KeyboardModifiers held = {}) {
        GridView& grid = window->libraryPage().grid();
        QTest::mouseClick(grid.viewport(), Qt::LeftButton, held, grid.cellOnScreen(index).center());
        settle();
    }
    void answer(const char* question, const char* button) {
        auto* sheet = find<QWidget>(question);
        ASSERT_NE(sheet, nullptr);
        click(sheet->findChild<QPushButton*>(button));
    }
    void chooseFolder(const std::filesystem::path& folder) {
        click("emptyButton");
        auto* dialog = window->findChild<QFileDialog*>();
        ASSERT_NE(dialog, nullptr);
        auto* name = dialog->findChild<QLineEdit*>("fileNameEdit");
        ASSERT_NE(name, nullptr);
        name->setText(QString::fromStdString(folder.string()));
        QTest::keyClick(name, Qt::Key_Return);
        settle();
        window->activateWindow(); // as a window manager does when the chooser has gone
        until([&] { return QApplication::focusWidget() != nullptr; });
    }
    PhotoUrl at(int index) const { return library->view().get()->photos[size_t(index)]->url; }
};

TEST_F(Session, FromTheFirstFolderToQuittingWithAPendingEdit) {
    const auto folder = photos("Trip", 6);
    open(true);
    chooseFolder(folder);
    until([&] { return shown() == 6; });

    press(Qt::Key_F, Qt::ControlModifier);
    type("img_3");
    EXPECT_EQ(shown(), 1u);
    press(Qt::Key_Escape);
    EXPECT_EQ(shown(), 6u);

    click("filterButton");
    auto* popover = find<QWidget>("filterPopover");
    auto* option = popover->findChild<QCheckBox*>("filterOption");
    ASSERT_NE(option, nullptr);
    QTest::mouseClick(option, Qt::LeftButton, {}, QPoint(8, option->height() / 2));
    settle();
    EXPECT_TRUE(library->filter().get().isActive());
    click("clearFilters");
    press(Qt::Key_Escape);
    EXPECT_FALSE(popover->isVisible());
    EXPECT_EQ(shown(), 6u);

    clickCell(0);
    clickCell(2, Qt::ShiftModifier);
    press(Qt::Key_Period);
    library->waitForWrites();
    EXPECT_EQ(library->favoriteCount(), 3u);

    press(Qt::Key_E, Qt::ControlModifier | Qt::ShiftModifier);
    until([&] { return find<QWidget>("exportSheet")->isVisible(); });
    click("startExport");
    until([&] { return exporter->state().get().finishedFolder.has_value(); });
    EXPECT_EQ(std::distance(
                  std::filesystem::directory_iterator(folders.pictures / "Kelvaro Exports"), {}),
              3);
    click("closeDone");

    const PhotoUrl gone = at(5);
    clickCell(5);
    press(Qt::Key_Delete);
    answer("trashQuestion", "answer0");
    until([&] { return shown() == 5; });
    EXPECT_FALSE(std::filesystem::exists(gone));

    // A file in the place of the folder for edits refuses them even to root.
    std::filesystem::remove_all(folder / ".tarnwell");
    std::ofstream(folder / ".tarnwell") << "in the way";
    const PhotoUrl edited = at(3);
    clickCell(3);
    press(Qt::Key_Return);
    until([&] { return library->isEditing() && window->editor().model().isOpen(); });
    SliderRow* exposure = window->editor().inspector().row("exposure");
    exposure->setFocus();
    for (int step = 0; step < 3; ++step)
        press(Qt::Key_Right);
    EXPECT_GT(window->editor().model().edit().exposure, 0);
    until([&] {
        const auto* told = window->findChild<QWidget*>("errorQuestion");
        return told && told->isVisible();
    });
    answer("errorQuestion", "answer0");
    press(Qt::Key_Escape);
    until([&] { return !library->isEditing() && library->unsavedEdits().get().size() == 1; });

    press(Qt::Key_Q, Qt::ControlModifier);
    answer("quitQuestion", "answer1");
    EXPECT_TRUE(window->isVisible());
    EXPECT_NE(library->edit(edited), nullptr);
    std::filesystem::remove(folder / ".tarnwell");
    library->rescanAll();
    until([&] { return library->isIdle() && library->unsavedEdits().get().empty(); });
    press(Qt::Key_Q, Qt::ControlModifier);
    until([&] { return !window->isVisible(); });
    EXPECT_TRUE(std::filesystem::exists(folder / ".tarnwell"));
}

} // namespace
} // namespace kelvaro
