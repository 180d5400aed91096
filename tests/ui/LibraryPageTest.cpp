// What the library page does with drops, places and typed letters.
#include "ui/WindowScene.h"

#include <QDropEvent>
#include <QMimeData>
#include <QScrollBar>

namespace kelvaro {
namespace {

class LibraryPageTest : public testing::Test, public WindowScene {
protected:
    GridView& grid() { return window->libraryPage().grid(); }
    void openWith(const std::vector<std::filesystem::path>& added) {
        std::vector<std::string> paths;
        for (const auto& folder : added)
            paths.push_back(folder.string());
        settings.set("folders", paths);
        open();
        until([&] { return shown() > 0 && library->isIdle(); });
    }
    void drop(QWidget* target, const std::filesystem::path& what) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(QString::fromStdString(what.string()))});
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &enter);
        if (!enter.isAccepted()) return;
        QDropEvent event({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(target, &event);
        settle();
    }
};

TEST_F(LibraryPageTest, FoldersAreAddedWhereverTheyAreDropped) {
    openWith({photos("One", 2)});
    drop(&window->libraryPage().sidebar(), photos("Two", 3));
    drop(&window->libraryPage(), photos("Three", 4));
    drop(&window->libraryPage(), root / "One/IMG_1.jpg"); // a photo is no folder
    EXPECT_EQ(library->folders().get().size(), 3u);
    EXPECT_EQ(library->photoCount(), 9u);
}

TEST_F(LibraryPageTest, ComesBackToThePlaceInAScope) {
    openWith({photos("Long", 120), photos("Short", 2)});
    library->setThumbSize(220);
    settle();
    QScrollBar* bar = grid().verticalScrollBar();
    bar->setValue(bar->maximum() / 2);
    const int place = bar->value();
    ASSERT_GT(place, 200);
    library->setScope({Scope::Kind::folder, library->folders().get()[1]});
    until([&] { return shown() == 2; });
    EXPECT_EQ(bar->value(), 0);
    library->setScope({Scope::Kind::all, {}});
    until([&] { return shown() == 122; });
    EXPECT_EQ(bar->value(), place);
    library->setSearchText("long");
    until([&] { return shown() == 120; });
    library->setSearchText("");
    until([&] { return shown() == 122; });
    EXPECT_EQ(bar->value(), place);
}

TEST_F(LibraryPageTest, LettersOfTheEditorsKeysFindPhotosInTheGrid) {
    const auto folder = photos("Names", 1);
    for (const char* name : {"crop.jpg", "mask.jpg", "joy.jpg", "oak.jpg", "elm.jpg"})
        std::filesystem::copy_file(folder / "IMG_1.jpg", folder / name);
    openWith({folder});
    grid().setFocus();
    for (const char* name : {"crop", "mask", "joy", "oak", "elm"}) {
        QTest::keyClicks(&grid(), name);
        const PhotoSet& chosen = library->selection().get();
        ASSERT_EQ(chosen.size(), 1u) << name;
        EXPECT_NE(chosen.begin()->find(name), std::string::npos) << *chosen.begin();
        QTest::keyClick(&grid(), Qt::Key_Escape); // another name begins
        QTest::keyClick(&grid(), Qt::Key_Home);
    }
    EXPECT_FALSE(library->isEditing());
}

TEST_F(LibraryPageTest, ShowsWhatWasLastSeenOfADriveThatIsAway) {
    const auto folder = photos("Card", 3);
    openWith({folder});
    library->setScope({Scope::Kind::folder, folder.string()});
    until([&] { return shown() == 3 && window->pictures().areVisibleReady(); });
    std::filesystem::rename(folder, root / "away");
    library->rescanAll();
    until([&] { return shown() == 0 && find<EmptyView>("emptyView")->isVisible(); });
    until([&] { return find<EmptyView>("emptyView")->pictureCount() == 3; });
    EXPECT_EQ(find<QLabel>("emptyText")->text(),
              "This folder isn't available. Is the drive connected?");
    std::filesystem::rename(root / "away", folder);
    library->rescanAll();
    until([&] { return shown() == 3; });
    EXPECT_EQ(find<EmptyView>("emptyView")->pictureCount(), 0u);
}

TEST_F(LibraryPageTest, KeepsTheZoomedPhotoInPlace) {
    openWith({photos("Long", 200)});
    QScrollBar* bar = grid().verticalScrollBar();
    library->setThumbSize(160);
    settle();
    bar->setValue(bar->maximum() / 2);
    const int index =
        grid().gridLayout().cellsBetween(bar->value() + 100, bar->value() + 101).first;
    library->setSelection({library->view().get()->photos[size_t(index)]->url});
    settle();
    const int middle = grid().cellOnScreen(index).center().y();
    library->setThumbSize(240);
    settle();
    EXPECT_NEAR(grid().cellOnScreen(index).center().y(), middle, 2);
}

// Stripes that a thumbnail of a small cell cannot hold come back in a large one.
TEST_F(LibraryPageTest, EnlargedCellsAreSharp) {
    std::filesystem::create_directories(root / "Stripes");
    QImage image(240, 160, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, x / 3 % 2 ? qRgb(240, 240, 240) : qRgb(20, 20, 20));
    }
    EXPECT_TRUE(image.save(QString::fromStdString((root.path() / "Stripes/a.png").string())));
    settings.set("thumbSize", 64.0);
    openWith({std::filesystem::canonical(root.path() / "Stripes")});
    until([&] { return window->pictures().areVisibleReady(); });
    library->setThumbSize(240);
    settle();
    until([&] { return window->pictures().areVisibleReady(); });
    const QImage shown = grid().viewport()->grab().toImage();
    const QPoint middle = grid().cellOnScreen(0).center();
    int darkest = 255, brightest = 0;
    for (int x = middle.x() - 30; x < middle.x() + 30; ++x) {
        const int level = qGray(shown.pixel(x, middle.y()));
        darkest = std::min(darkest, level);
        brightest = std::max(brightest, level);
    }
    EXPECT_GT(brightest - darkest, 100);
}

TEST_F(LibraryPageTest, PillsLeaveWhenTheWorkIsDone) {
    openWith({photos("One", 2), photos("Two", 2), photos("Three", 2)});
    EXPECT_TRUE(find<QWidget>("indexingPill")->isHidden());
    desktop.wanted.reducesMotion = false;
    desktop.tell();
    library->showNotice("Hello");
    settle();
    EXPECT_FALSE(find<QWidget>("noticePill")->isHidden());
    until([&] { return find<QWidget>("noticePill")->isHidden(); });
}

} // namespace
} // namespace kelvaro
