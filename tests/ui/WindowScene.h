// The whole window over a real library in a folder of its own. Settings, Trash, desktop and answers
// are the test's; everything else is what users get.
#pragma once

#include "app/RenderServices.h"
#include "app/Services.h"
#include "fakes/FolderTrash.h"
#include "fakes/MemorySettings.h"
#include "fakes/TemporaryFolder.h"
#include "platform/metadata/ExifMetadataCopier.h"
#include "ui/FakeDesktop.h"
#include "ui/ScriptedPrompts.h"
#include "ui/shell/MainWindow.h"
#include "ui/shell/QtMainThread.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace kelvaro {

class WindowScene {
public:
    TemporaryFolder root;
    QtMainThread main;
    Cancellation interruption;
    Services services = makeServices(interruption);
    MemorySettings settings;
    FolderTrash trash{root / "trash"};
    UserFolders folders{root.path(), root / "pictures", root / "settings", root / "support",
                        root / "caches"};
    ExifMetadataCopier metadata;
    FakeDesktop desktop;
    ScriptedPrompts::Script script;
    Appearance appearance;
    std::unique_ptr<RenderServices> render;
    std::unique_ptr<LibraryStore> library;
    std::unique_ptr<EditingServices> editing;
    std::unique_ptr<Exporter> exporter;
    std::unique_ptr<ProfileServices> profile;
    std::unique_ptr<MainWindow> window;

    WindowScene() { settings.set("introductionSeen", true); }
    // Closes everything that stands on the services.
    void end() {
        window.reset();
        profile.reset();
        exporter.reset();
        editing.reset();
        library.reset();
    }
    ~WindowScene() {
        end();
        render.reset();
    }

    // Folders that are to be in the library from the start go into the settings before. Without
    // `asks` questions are answered by the script, with it they are sheets.
    MainWindow& open(bool asks = false) {
        render = std::make_unique<RenderServices>(services, *services.clock, main, folders,
                                                  RenderLogs{});
        const RecoveryReport recovered = EditingServices::recover(services, folders);
        library = std::make_unique<LibraryStore>(LibraryServices{.files = *services.files,
                                                                 .settings = settings,
                                                                 .folders = folders,
                                                                 .clock = *services.clock,
                                                                 .main = main,
                                                                 .random = *services.random,
                                                                 .properties = *services.properties,
                                                                 .texts = *services.texts,
                                                                 .calendar = *services.calendar,
                                                                 .trash = trash});
        editing = std::make_unique<EditingServices>(services, folders, main, *library, recovered);
        RenderEngine& engine = render->engine();
        exporter = std::make_unique<Exporter>(
            ExportParts{*services.files, *services.random, *services.reader, *services.writer,
                        *services.raw, *services.properties, metadata, engine.exportRenderer(),
                        *services.brushes, engine.work(), *services.clock},
            main);
        profile = std::make_unique<ProfileServices>(
            ProfileServices::Parts{*library, *exporter, settings, desktop, *services.clock,
                                   *services.calendar, *services.texts, main, "1.2.3"});
        window = std::make_unique<MainWindow>(
            WindowParts{.appearance = appearance,
                        .library = *library,
                        .engine = engine,
                        .sessions = render->sessions(),
                        .thumbnails = render->thumbnails(),
                        .editing = *editing,
                        .exporter = *exporter,
                        .profile = *profile,
                        .settings = settings,
                        .folders = folders,
                        .desktop = desktop,
                        .texts = *services.texts,
                        .calendar = *services.calendar,
                        .version = "1.2.3",
                        .prompts = asks ? nullptr : std::make_unique<ScriptedPrompts>(script)});
        window->resize(1280, 800);
        window->show();
        window->activateWindow();
        settle();
        return *window;
    }

    // Runs the event loop until `done` holds; the test fails when it never does.
    template<class Done>
    void until(Done done) {
        QElapsedTimer clock;
        clock.start();
        QTimer tick; // for what comes without an event; the rest of the time the thread sleeps
        tick.start(20);
        while (!done()) {
            ASSERT_LT(clock.elapsed(), 60'000) << "waited too long";
            QApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents);
        }
    }
    // Pages and sheets that are otherwise made when they are first opened.
    void makeAll() {
        window->editor();
        window->exportSheet();
        window->profilePage();
        window->settingsSheet();
    }
    void settle() {
        until([&] { return library->isIdle(); });
        QApplication::processEvents();
        QApplication::processEvents();
    }
    std::size_t shown() const { return library->view().get()->photos.size(); }

    template<class T>
    T* find(const char* name) const {
        T* found = window->findChild<T*>(name);
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

    // A folder of drawn photos; every third is upright.
    std::filesystem::path photos(const std::string& folder, int count) {
        std::filesystem::create_directories(root / folder);
        for (int at = 1; at <= count; ++at) {
            QImage image(at % 3 ? QSize(240, 160) : QSize(160, 240), QImage::Format_RGB32);
            image.fill(QColor::fromHsv(at * 47 % 360, 120, 180));
            const auto file = root.path() / folder / ("IMG_" + std::to_string(at) + ".jpg");
            EXPECT_TRUE(image.save(QString::fromStdString(file.string()), "JPEG", 90));
        }
        return std::filesystem::canonical(root.path() / folder);
    }
};

} // namespace kelvaro
