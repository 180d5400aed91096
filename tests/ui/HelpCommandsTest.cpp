// What the commands of the Help menu ask the desktop for, and what leaves the window by hand.
#include "app/Mails.h"
#include "ui/WindowScene.h"

#include <QDrag>
#include <QMimeData>
#include <QTimer>

namespace kelvaro {
namespace {

class HelpCommands : public testing::Test, public WindowScene {
protected:
    void run(CommandId id) {
        window->commands().action(id)->trigger();
        QApplication::processEvents();
    }
};

TEST_F(HelpCommands, AskTheDesktopInThisSystemsWords) {
    open();
    run(CommandId::reportProblem);
    ASSERT_EQ(desktop.mail.size(), 3u);
    EXPECT_EQ(desktop.mail[0], feedback().to);
    EXPECT_EQ(desktop.mail[1], "Kelvaro: problem report");
    EXPECT_EQ(desktop.mail[2],
              "What happened:\n\n\nSteps to reproduce (if you know them):\n\n\n"
              "If Kelvaro quit unexpectedly, a report was saved in "
              "~/.local/share/Kelvaro/crash-reports (Help › Show Crash Reports): attaching the "
              "newest “Kelvaro” one helps a lot.\n\n— Please keep these details —\n"
              "Kelvaro 1.2.3\nDebian GNU/Linux 12 (bookworm)\nExample Processor 9000");
    run(CommandId::sendFeedback);
    EXPECT_EQ(desktop.mail[1], "Kelvaro: feedback");
    EXPECT_EQ(desktop.mail[2], "\n\n\n— Kelvaro");
    run(CommandId::website);
    EXPECT_EQ(desktop.web, websiteAddress);
    run(CommandId::crashReports);
    EXPECT_EQ(desktop.opened, folders.support / "crash-reports");
    EXPECT_TRUE(std::filesystem::is_directory(desktop.opened));
    run(CommandId::checkForUpdates);
    ASSERT_EQ(script.asked.size(), 1u);
    EXPECT_EQ(script.asked[0].text, "New versions come with your system's software updates.");
}

TEST_F(HelpCommands, SettingsAreStoredAtOnceAndFollowed) {
    open(true);
    run(CommandId::settings);
    const bool showed = *library->showsFilmstrip();
    QTest::mouseClick(find<QAbstractButton>("showsPhotoBar"), Qt::LeftButton);
    EXPECT_EQ(settings.get<bool>("showsFilmstrip"), !showed);
    EXPECT_EQ(*library->showsFilmstrip(), !showed);

    auto* appearance_ = find<QComboBox>("appearance");
    for (const auto& [key, stored, isDark] :
         {std::tuple{Qt::Key_End, "dark", true}, {Qt::Key_Up, "light", false}}) {
        appearance_->setFocus();
        QTest::keyClick(appearance_, key);
        QApplication::processEvents();
        EXPECT_EQ(settings.get<std::string>("appearance"), stored);
        EXPECT_EQ(appearance.theme().dark, isDark) << stored;
    }
    QTest::keyClicks(find<QLineEdit>("profileName"), "Noor");
    EXPECT_EQ(settings.get<std::string>("profileName"), "Noor");
    EXPECT_EQ(window->commands().action(CommandId::profile)->toolTip(),
              "Noor's profile (Ctrl+Shift+P)");
}

TEST_F(HelpCommands, ThePhotoBarsHelpChangesAndItsKeyStays) {
    settings.set("folders", std::vector<std::string>{photos("Trip", 2).string()});
    open();
    until([&] { return shown() == 2; });
    library->setShowsFilmstrip(true);
    library->openEditor(library->view().get()->photos[0]->url);
    settle();
    const QAction& action = *window->commands().action(CommandId::togglePhotoBar);
    const QKeySequence key("Ctrl+Shift+F");
    for (const char* help : {"Hide Photo Bar (Ctrl+Shift+F)", "Show Photo Bar (Ctrl+Shift+F)"}) {
        EXPECT_EQ(action.toolTip(), help);
        EXPECT_EQ(action.shortcut(), key);
        QTest::keyClick(window.get(), Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
        QApplication::processEvents();
    }
    EXPECT_EQ(action.toolTip(), "Hide Photo Bar (Ctrl+Shift+F)");
}

TEST_F(HelpCommands, SelectedPhotosAreDraggedOutAsFiles) {
    const auto folder = photos("Trip", 4);
    std::filesystem::rename(folder / "IMG_1.jpg", folder / "IMG_1 \xff#ä.jpg"); // no valid UTF-8
    settings.set("folders", std::vector<std::string>{folder.string()});
    open();
    until([&] { return shown() == 4; });
    GridView& grid = window->libraryPage().grid();
    grid.selectAll();
    QList<QUrl> dragged;
    Qt::DropActions actions;
    const QPoint from = grid.cellOnScreen(1).center();
    const QPointF to = from + QPoint(2 * QApplication::startDragDistance(), 0);
    QTest::mousePress(grid.viewport(), Qt::LeftButton, {}, from);
    // Some platforms drag in a loop of their own, others end at once and clean up later.
    const auto look = [&] {
        const auto* drag = grid.findChild<QDrag*>();
        if (!drag) return;
        dragged = drag->mimeData()->urls();
        actions = drag->supportedActions();
    };
    QTimer::singleShot(0, &grid, [&] {
        look();
        QDrag::cancel();
    });
    QMouseEvent move(QEvent::MouseMove, to, grid.viewport()->mapToGlobal(to), Qt::NoButton,
                     Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(grid.viewport(), &move);
    if (dragged.empty()) look();
    ASSERT_EQ(dragged.size(), 4);
    EXPECT_EQ(actions, Qt::CopyAction) << "originals stay where they are";
    std::set<QByteArray> files, expected;
    for (const QUrl& url : dragged)
        files.insert(QByteArray::fromPercentEncoding(url.toEncoded().mid(7)));
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        if (entry.is_regular_file())
            expected.insert(QByteArray::fromStdString(entry.path().string()));
    }
    EXPECT_EQ(files, expected);
}

} // namespace
} // namespace kelvaro
