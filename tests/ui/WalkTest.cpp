// A walk through the window with real clicks and keys, and what it must leave on the disk.
#include "ui/WindowScene.h"

#include <QCheckBox>
#include <QPushButton>

namespace kelvaro {
namespace {

class Walk : public testing::Test, public WindowScene {
protected:
    GridView& grid() { return window->libraryPage().grid(); }

    void clickCell(int index, Qt::KeyboardModifiers held = {}) {
        QTest::mouseClick(grid().viewport(), Qt::LeftButton, held,
                          grid().cellOnScreen(index).center());
        QApplication::processEvents(); // as between two acts of a hand
    }
    void pressKey(Qt::Key key, Qt::KeyboardModifiers held = {}) {
        QWidget* receiver = QApplication::focusWidget();
        QTest::keyClick(receiver ? receiver : window.get(), key, held);
        QApplication::processEvents();
    }
    void addPhotos(int count) {
        script.folder = photos("Trip", count);
        open();
        QTest::mouseClick(find<QPushButton>("emptyButton"), Qt::LeftButton);
        settle();
    }
    static std::size_t filesIn(const std::filesystem::path& folder) {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder), {}));
    }
};

TEST_F(Walk, AddsAFolderThroughTheButtonOfTheEmptyLibrary) {
    addPhotos(6);
    EXPECT_EQ(script.folderMessages.at(0),
              "Choose a folder of photos. Kelvaro never modifies your originals.");
    EXPECT_EQ(shown(), 6u);
    EXPECT_EQ(find<QLabel>("scopeTitle")->text(), "Trip");
}

TEST_F(Walk, SearchesWhileTypingAndClearsWithEscape) {
    addPhotos(12);
    pressKey(Qt::Key_F, Qt::ControlModifier);
    until([&] { return find<QLineEdit>("searchField")->hasFocus(); });
    // Letters that are keys elsewhere are letters here.
    QTest::keyClicks(find<QLineEdit>("searchField"), "img_12.j");
    settle();
    EXPECT_EQ(library->searchText().get(), "img_12.j");
    EXPECT_EQ(shown(), 1u);
    EXPECT_EQ(library->favoriteCount(), 0u);
    QTest::keyClicks(find<QLineEdit>("searchField"), "zzz");
    settle();
    EXPECT_EQ(find<QLabel>("emptyText")->text(), "No photos match “img_12.jzzz”");
    QTest::mouseClick(find<QPushButton>("emptyButton"), Qt::LeftButton);
    settle();
    EXPECT_EQ(shown(), 12u);
}

TEST_F(Walk, FiltersByKindInThePopoverAndEscapeClosesIt) {
    addPhotos(3);
    QTest::mouseClick(window->libraryPage().toolbar().filterButton(), Qt::LeftButton);
    auto* popover = find<QWidget>("filterPopover");
    ASSERT_TRUE(popover->isVisible());
    auto* option = popover->findChild<QCheckBox*>("filterOption");
    ASSERT_NE(option, nullptr);
    QTest::mouseClick(option, Qt::LeftButton, {}, QPoint(8, option->height() / 2));
    settle();
    EXPECT_TRUE(library->filter().get().isActive());
    EXPECT_EQ(window->libraryPage().toolbar().filterButton()->accessibleName(), "Filters Active");
    pressKey(Qt::Key_Escape);
    EXPECT_FALSE(popover->isVisible());
}

TEST_F(Walk, SelectsWithClicksKeysAndARubberBand) {
    addPhotos(20);
    clickCell(0);
    clickCell(4, Qt::ShiftModifier);
    EXPECT_EQ(library->selection().get().size(), 5u);
    clickCell(2, Qt::ControlModifier);
    EXPECT_EQ(library->selection().get().size(), 4u);
    grid().setFocus();
    pressKey(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(library->selection().get().size(), 20u);
    pressKey(Qt::Key_Escape);
    EXPECT_TRUE(library->selection().get().empty());
    // From the free room under the last row up to the first cell of that row.
    const GridLayout& cells = grid().gridLayout();
    const QPoint from = grid().cellOnScreen(cells.count() - 1).bottomRight() + QPoint(4, 8);
    const int rowStart = cells.count() - 1 - (cells.count() - 1) % cells.columns();
    const QPoint to = grid().cellOnScreen(rowStart).center();
    QTest::mousePress(grid().viewport(), Qt::LeftButton, {}, from);
    QTest::mouseMove(grid().viewport(), (from + to) / 2);
    QMouseEvent drag(QEvent::MouseMove, to, grid().viewport()->mapToGlobal(to), Qt::NoButton,
                     Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(grid().viewport(), &drag);
    QApplication::sendEvent(grid().viewport(), &drag);
    QTest::mouseRelease(grid().viewport(), Qt::LeftButton, {}, to);
    EXPECT_EQ(library->selection().get().size(), std::size_t(cells.count() - rowStart));
}

TEST_F(Walk, MarksFavoritesWithThePointKey) {
    addPhotos(4);
    clickCell(1);
    grid().setFocus();
    pressKey(Qt::Key_Period);
    settle();
    library->waitForWrites();
    EXPECT_EQ(library->favoriteCount(), 1u);
    EXPECT_EQ(window->commands().action(CommandId::favorite)->toolTip(),
              "Remove from Favorites (.)");
}

TEST_F(Walk, ExportsThreePhotosFromTheSheet) {
    addPhotos(5);
    clickCell(0);
    clickCell(2, Qt::ShiftModifier);
    pressKey(Qt::Key_E, Qt::ControlModifier | Qt::ShiftModifier);
    auto* sheet = find<QWidget>("exportSheet");
    until([&] { return sheet->isVisible(); });
    QTest::mouseClick(find<QPushButton>("startExport"), Qt::LeftButton);
    until([&] { return exporter->state().get().finishedFolder.has_value(); });
    EXPECT_EQ(filesIn(folders.pictures / "Kelvaro Exports"), 3u);
    EXPECT_EQ(find<QLabel>("doneTitle")->text(), "3 photos exported");
    QTest::mouseClick(find<QPushButton>("showExported"), Qt::LeftButton);
    EXPECT_EQ(desktop.shown.size(), 3u);
}

TEST_F(Walk, MovesOnePhotoToTheTrashAfterAsking) {
    addPhotos(3);
    clickCell(0);
    pressKey(Qt::Key_Delete); // the script's first answer is no
    EXPECT_EQ(shown(), 3u);
    ASSERT_EQ(script.asked.size(), 1u);
    script.answers["trash"] = 0;
    pressKey(Qt::Key_Delete);
    settle();
    until([&] { return shown() == 2; });
    EXPECT_EQ(filesIn(root / "trash"), 1u);
}

TEST_F(Walk, OffersToDeleteWhatTheTrashRefuses) {
    trash.refused = {"IMG_1.jpg", "IMG_2.jpg", "IMG_3.jpg"};
    addPhotos(3);
    clickCell(0);
    script.answers = {{"trash", 0}, {"delete", 0}};
    pressKey(Qt::Key_Delete);
    until([&] { return shown() == 2; });
    EXPECT_EQ(script.asked.back().name, "delete");
    EXPECT_EQ(script.asked.back().buttons.front(), "Delete Immediately");
}

TEST_F(Walk, OpensAPhotoAndComesBackToItsPlace) {
    addPhotos(8);
    clickCell(3);
    grid().setFocus();
    pressKey(Qt::Key_Return);
    until([&] { return library->isEditing() && window->editor().isVisible(); });
    const PhotoUrl first = *library->openPhoto().get();
    pressKey(Qt::Key_Right);
    EXPECT_NE(*library->openPhoto().get(), first);
    pressKey(Qt::Key_Escape);
    until([&] { return window->libraryPage().isVisible(); });
    EXPECT_FALSE(library->isEditing());
}

TEST_F(Walk, AsksBeforeQuittingWithAnEditThatCouldNotBeWritten) {
    addPhotos(2);
    const auto folder = *script.folder;
    // A file in the place of the folder for edits refuses them even to root.
    std::ofstream(folder / ".tarnwell") << "in the way";
    Adjustments edit;
    edit.exposure = 1;
    library->setAdjustments(library->view().get()->photos.front()->url, edit);
    library->waitForWrites();
    until([&] { return library->quitCheck().has_value(); });
    window->close();
    EXPECT_TRUE(window->isVisible());
    ASSERT_FALSE(script.asked.empty());
    EXPECT_EQ(script.asked.back().title, "Some changes haven't been saved");
    EXPECT_EQ(script.asked.back().buttons,
              (std::vector<std::string>{"Quit Without Saving", "Keep Open"}));
    script.answers["quit"] = 0;
    window->close();
    until([&] { return !window->isVisible(); });
}

TEST_F(Walk, SurvivesAFolderThatVanishesWhileItsPhotosAreSelected) {
    addPhotos(6);
    grid().setFocus();
    pressKey(Qt::Key_A, Qt::ControlModifier);
    std::filesystem::remove_all(*script.folder);
    library->rescanAll();
    settle();
    until([&] { return shown() == 0; });
    EXPECT_EQ(find<QLabel>("emptyText")->text(),
              "This folder isn't available. Is the drive connected?");
    pressKey(Qt::Key_Delete);
    pressKey(Qt::Key_E, Qt::ControlModifier | Qt::ShiftModifier);
}

} // namespace
} // namespace kelvaro
