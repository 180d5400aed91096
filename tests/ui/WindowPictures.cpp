// Draws the states of the window into PNG files, for people to look at and for the documents:
//     window_pictures PHOTOS... OUTPUT     folders of photos, then the folder to write into
// KELVARO_WINDOW_SIZE=1920x1080, KELVARO_LIGHT=1 and QT_SCALE_FACTOR=2 make the other variants.
#include "ui/WindowScene.h"

#include "ui/shell/Sheets.h"

#include <QDir>
#include <QPushButton>
#include <QScrollBar>

#include <cstdio>

namespace kelvaro {
namespace {

class Pictures : public WindowScene {
public:
    Pictures(const QStringList& shown, QString output) : output_(std::move(output)) {
        QDir().mkpath(output_);
        std::vector<std::string> paths;
        for (const QString& folder : shown)
            paths.push_back(QDir(folder).canonicalPath().toStdString());
        folders_ = paths;
        desktop.wanted = {.prefersDark = !qEnvironmentVariableIsSet("KELVARO_LIGHT"),
                          .reducesMotion = true};
    }

    void draw() {
        settings.remove("introductionSeen");
        openSized();
        take("first-launch");
        pressEscape();
        take("empty-library");
        end();
        settings.set("introductionSeen", true);
        settings.set("folders", folders_);
        openSized();
        drawLibrary();
        drawSheets();
        drawViewer();
    }

private:
    void openSized() {
        open(true);
        const QStringList size = qEnvironmentVariable("KELVARO_WINDOW_SIZE", "1280x800").split('x');
        window->resize(size.at(0).toInt(), size.at(1).toInt());
        wait();
    }
    // Until thumbnails have come and nothing moves.
    void wait() {
        settle();
        QElapsedTimer quiet;
        quiet.start();
        while (quiet.elapsed() < 400) {
            QApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 50);
            const bool isWhole =
                render->thumbnails().openRequests() == 0 && window->pictures().areVisibleReady();
            if (!isWhole) quiet.restart();
        }
    }
    std::vector<PhotoUrl> urls() const {
        std::vector<PhotoUrl> found;
        for (const Photo* photo : library->view().get()->photos)
            found.push_back(photo->url);
        return found;
    }
    void pressEscape() {
        QWidget* receiver = QApplication::focusWidget();
        QTest::keyClick(receiver ? receiver : window.get(), Qt::Key_Escape);
    }
    void take(const QString& name) {
        wait();
        window->grab().save(output_ + "/" + name + ".png");
        std::printf("%s\n", qPrintable(name));
        std::fflush(stdout);
    }
    void drawLibrary() {
        take("grid");
        const std::vector<PhotoUrl> photos = urls();
        if (photos.size() < 5) {
            std::fputs("window_pictures: five photos at least are needed\n", stderr);
            std::exit(2);
        }
        library->setFavorite({photos[1], photos[4]}, true);
        Adjustments edit;
        edit.exposure = 0.4;
        edit.contrast = 20;
        library->setAdjustments(photos[2], edit);
        library->setSelection({photos[1], photos[2], photos[3]});
        library->setThumbSize(280);
        take("grid-large");
        library->setThumbSize(80);
        take("grid-small");
        library->setThumbSize(160);
        library->setSelection({photos[0]});
        library->requestInfo(photos[0]);
        take("info");
        library->requestInfo(std::nullopt);
        library->setScope(
            {Scope::Kind::folder, folders_[std::min<size_t>(1, folders_.size() - 1)]});
        wait();
        window->libraryPage().grid().verticalScrollBar()->setValue(90);
        library->setSelection({});
        take("folder");
        library->setScope({Scope::Kind::all, {}});
        wait();
        library->setSearchText("raw");
        take("search");
        library->setSearchText("submarine");
        take("search-nothing");
        library->setSearchText("");
        QTest::mouseClick(window->libraryPage().toolbar().filterButton(), Qt::LeftButton);
        take("filter");
        pressEscape();
        takeMissingDrive();
    }
    // The last folder goes away for a moment.
    void takeMissingDrive() {
        const std::string folder = folders_.back(), away = folder + ".away";
        library->setScope({Scope::Kind::folder, folder});
        wait();
        std::filesystem::rename(folder, away);
        library->rescanAll();
        take("missing-drive");
        std::filesystem::rename(away, folder);
        library->rescanAll();
        library->setScope({Scope::Kind::all, {}});
        wait();
    }
    void drawSheets() {
        const std::vector<PhotoUrl> photos = urls();
        const auto some = photos.begin() + std::min<std::ptrdiff_t>(12, std::ssize(photos));
        library->setSelection(PhotoSet(photos.begin(), some));
        wait();
        window->commands().action(CommandId::moveToTrash)->trigger();
        take("trash-question");
        pressEscape();
        window->commands().action(CommandId::settings)->trigger();
        take("settings");
        pressEscape();
        window->commands().action(CommandId::about)->trigger();
        take("about");
        pressEscape();
        ExportSettings wanted = ExportSettings::load(settings, folders);
        wanted.border = true;
        wanted.borderPercent = 3;
        wanted.dateStamp = DateStamp::Style::dayMonthYear;
        wanted.resize = true;
        wanted.save(settings);
        library->requestExport();
        take("export-sheet");
        find<QPushButton>("startExport")->click();
        until(
            [&] { return exporter->state().get().done >= 2 || !exporter->state().get().running; });
        window->grab().save(output_ + "/export-running.png");
        until([&] { return !exporter->state().get().running; });
        take("export-done");
        pressEscape();
    }
    void drawViewer() {
        library->openEditor(urls()[2]);
        wait();
        take("photo");
    }

    QString output_;
    std::vector<std::string> folders_;
};

} // namespace
} // namespace kelvaro

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM") && !qEnvironmentVariableIsSet("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QStringList arguments = QApplication::arguments().mid(1);
    if (arguments.size() < 2) {
        std::fputs("usage: window_pictures PHOTOS... OUTPUT\n", stderr);
        return 2;
    }
    const QString output = arguments.takeLast();
    kelvaro::Pictures(arguments, output).draw();
    return 0;
}
