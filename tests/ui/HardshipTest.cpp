// The window when photos, names, settings or the screen are not as one would wish.
#include "ui/WindowScene.h"
#include "ui/grid/CellPainter.h"

namespace kelvaro {
namespace {

class Hardship : public testing::Test, public WindowScene {
protected:
    GridView& grid() { return window->libraryPage().grid(); }

    void save(const std::string& name, QSize size) {
        std::filesystem::create_directories(root / "Odd");
        QImage image(size, QImage::Format_RGB32);
        image.fill(QColor(120, 90, 60));
        const auto file = root.path() / "Odd" / name;
        EXPECT_TRUE(image.save(QString::fromStdString(file.string()), "PNG")) << name;
    }
    void openOdd(const std::vector<std::string>& added = {}) {
        std::vector<std::string> all = added;
        if (all.empty()) all.push_back(std::filesystem::canonical(root / "Odd").string());
        settings.set("folders", all);
        open(true);
        until([&] { return shown() > 0; });
    }
};

TEST_F(Hardship, OddShapesAndNamesAreShownOpenedAndTold) {
    save("dot.png", {1, 1});
    save("thread.png", {1, 20000});
    save(std::string(251, 'n') + ".png", {30, 20});
    save("\u05d0\u05d1\u05d2 \u0645\u0631\u062d\u0628\u0627.png", {30, 20});
    save("\u202e gnp.evil.png", {30, 20});
    openOdd();
    EXPECT_EQ(shown(), 5u);
    until([&] { return window->pictures().areVisibleReady(); });
    EXPECT_FALSE(window->grab().isNull());
    std::vector<PhotoUrl> urls;
    for (const Photo* photo : library->view().get()->photos)
        urls.push_back(photo->url);
    for (const PhotoUrl& url : urls) {
        library->setSelection({url});
        library->requestInfo(url);
        until([&] { return library->info().get().has_value(); });
        EXPECT_EQ(window->width(), 1280) << "the name has widened the window";
        window->commands().action(CommandId::moveToTrash)->trigger();
        QApplication::processEvents();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        library->openEditor(url);
        settle();
        library->closeEditor();
        settle();
    }
    EXPECT_EQ(shown(), 5u);
}

TEST_F(Hardship, PhotosThatCannotBeReadAreMarked) {
    save("a.png", {30, 20});
    save("b.png", {30, 20});
    writeFile(root / "Odd/b.png", readFile(root / "Odd/b.png").substr(0, 60));
    writeFile(root / "Odd/c.png", "");
    openOdd();
    until([&] { return window->pictures().areVisibleReady(); });
    ASSERT_EQ(grid().content().count(), 3);
    for (int index = 0; index < 3; ++index) {
        const GridCell cell = grid().content().cell(index);
        EXPECT_EQ(cell.isUnreadable, cell.name != "a.png") << cell.name.toStdString();
    }
}

TEST_F(Hardship, EveryShapeKeepsTwoPixelsAndItsCell) {
    for (const QSize shape : {QSize(1, 20000), QSize(20000, 1), QSize(1, 1), QSize()}) {
        for (const double ratio : {1.0, 1.25, 2.0}) {
            const QRect cell(10, 10, 97, 97);
            const QRectF photo = photoRect(cell, shape, ratio);
            EXPECT_TRUE(QRectF(cell).contains(photo)) << shape.width() << "x" << shape.height();
            EXPECT_GE(std::min(photo.width(), photo.height()) * ratio, 2);
        }
    }
}

TEST_F(Hardship, GarbageInTheSettingsIsPassedOver) {
    const auto folder = photos("Trip", 3);
    settings.set("folders", std::vector<std::string>{folder.string(), "", "not/absolute"});
    settings.set("thumbSize", std::string("large"));
    settings.set("sortOrder", std::string("{]"));
    settings.set("appearance", 7.0);
    settings.set("exportSettings", std::string("nothing"));
    settings.set("windowGeometry", std::string("%%%"));
    settings.set("showsSidebar", std::string("maybe"));
    open();
    until([&] { return shown() == 3; });
    EXPECT_TRUE(window->libraryPage().showsSidebar());
    EXPECT_GE(window->width(), window->minimumWidth());
}

TEST_F(Hardship, SheetsFitASmallScreen) {
    settings.set("folders", std::vector<std::string>{photos("Trip", 4).string()});
    open(true);
    window->resize(1024, 600);
    until([&] { return shown() == 4; });
    library->selectAll();
    settle();
    library->requestExport();
    settle();
    for (const CommandId id : {CommandId::about, CommandId::introduction, CommandId::settings})
        window->commands().action(id)->trigger();
    settle();
    for (QWidget* child : window->findChildren<QWidget*>(Qt::FindDirectChildrenOnly)) {
        const auto* overlay = dynamic_cast<Overlay*>(child);
        if (!overlay || !overlay->isVisible()) continue;
        const QSize least = overlay->panel()->layout()->minimumSize();
        const std::string name = child->objectName().toStdString();
        EXPECT_TRUE(window->rect().contains(overlay->panel()->geometry())) << name;
        EXPECT_LE(least.height(), overlay->panel()->height()) << name;
        EXPECT_LE(least.width(), overlay->panel()->width()) << name;
    }
}

TEST_F(Hardship, ThePreviewOfAnExportSaysWhyItsPhotoCannotBeShown) {
    const auto folder = photos("Trip", 2);
    std::ofstream(folder / "IMG_0.jpg") << "not a photo";
    settings.set("folders", std::vector<std::string>{folder.string()});
    open();
    until([&] { return shown() == 3; });
    const ExportPreview& preview = window->exportSheet().preview();
    const auto exported = [&](const char* name) {
        library->setSelection({(folder / name).string()});
        library->requestExport();
        settle();
    };
    exported("IMG_0.jpg");
    until([&] { return !preview.accessibleDescription().isEmpty(); });
    exported("IMG_1.jpg");
    EXPECT_TRUE(preview.accessibleDescription().isEmpty());
}

TEST_F(Hardship, TenThousandSelectedPhotosGoToTheTrash) {
    const auto folder = photos("Many", 1);
    for (int at = 2; at <= 10'000; ++at)
        std::filesystem::create_hard_link(folder / "IMG_1.jpg",
                                          folder / ("IMG_" + std::to_string(at) + ".jpg"));
    settings.set("folders", std::vector<std::string>{folder.string()});
    script.answers["trash"] = 0;
    open();
    until([&] { return shown() == 10'000; });
    grid().setFocus();
    grid().selectAll();
    EXPECT_EQ(library->selection().get().size(), 10'000u);
    settle();
    QTest::keyClick(&grid(), Qt::Key_Delete);
    until([&] { return shown() == 0 && library->isIdle(); });
    EXPECT_EQ(script.asked.at(0).title, "Move 10000 photos to the Trash?");
    EXPECT_TRUE(library->selection().get().empty());
}

} // namespace
} // namespace kelvaro
