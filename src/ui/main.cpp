// The program with the window: reads what the environment asks, puts the services together, shows
// the library.
#include "app/LaunchOptions.h"
#include "ui/shell/ProgramParts.h"
#include "ui/shell/QtMainThread.h"
#include "ui/shell/ScreenProfile.h"

#include <QApplication>
#include <QDir>
#include <QTranslator>
#include <QWindow>

#include <cstdio>
#include <cstdlib>

namespace kelvaro {
namespace {

constexpr int noDisplayStatus = 1;

// Qt ends the program without a word that people understand when there is no display.
bool hasDisplay() {
    const auto isSet = [](const char* name) {
        const char* value = std::getenv(name);
        return value && *value;
    };
    return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY") || isSet("QT_QPA_PLATFORM");
}

// Folders named on the command line join the library.
void addFolders(LibraryStore& library, const QStringList& arguments) {
    for (const QString& argument : arguments.mid(1)) {
        if (!argument.startsWith('-'))
            library.addFolder(std::filesystem::absolute(argument.toStdString()));
    }
}

int run(int argc, char** argv) {
    QApplication::setApplicationName("kelvaro");
    QApplication::setApplicationDisplayName("Kelvaro");
    QApplication::setApplicationVersion(KELVARO_VERSION);
    QApplication::setDesktopFileName("app.kelvaro.Kelvaro");
    const QApplication application(argc, argv);
    QTranslator translator;
    const QDir translations(QApplication::applicationDirPath() + "/../share/kelvaro/translations");
    if (translator.load(QLocale(), "kelvaro", "_", translations.path()))
        QApplication::installTranslator(&translator);
    QtMainThread mainThread;
    const Cancellation interruption;
    WindowServices parts(mainThread, launchOptions(), interruption, KELVARO_VERSION);
    reportCrashes(parts.folders(), KELVARO_VERSION);
    addFolders(parts.library(), QApplication::arguments());
    Appearance appearance;
    int status = 0;
    {
        MainWindow window(partsOf(parts, appearance, KELVARO_VERSION));
        window.show();
        const auto takeProfile = [&window](const QScreen* screen) {
            window.setScreenProfile(screenProfile(screen));
        };
        takeProfile(window.screen());
        QObject::connect(window.windowHandle(), &QWindow::screenChanged, &window, takeProfile);
        status = QApplication::exec();
    }
    parts.settings().flush();
    return status;
}

} // namespace
} // namespace kelvaro

int main(int argc, char** argv) {
    if (kelvaro::launchOptions().asksForScript) {
        std::printf("%s\n", std::string(kelvaro::scriptRefusal).c_str());
        return kelvaro::scriptRefusalStatus;
    }
    if (!kelvaro::hasDisplay()) {
        std::fputs("kelvaro: There is no display to open a window on. kelvaro-cli develops photos "
                   "without one.\n",
                   stderr);
        return kelvaro::noDisplayStatus;
    }
    return kelvaro::run(argc, argv);
}
