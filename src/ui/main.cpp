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

[[noreturn]] void endWithoutDisplay() {
    std::fputs("kelvaro: There is no display to open a window on. kelvaro-cli develops photos "
               "without one.\n",
               stderr);
    std::_Exit(noDisplayStatus);
}

// Qt aborts with a message for developers where a display is named but cannot be opened.
void takeStartMessage(QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtFatalMsg) endWithoutDisplay();
    std::fprintf(stderr, "%s\n", qPrintable(text));
}

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
    // The library is read while Qt starts, and ends before it.
    QtMainThread mainThread;
    const Cancellation interruption;
    auto parts = std::make_unique<WindowServices>(mainThread, launchOptions(), interruption,
                                                  KELVARO_VERSION);
    qInstallMessageHandler(takeStartMessage);
    const QApplication application(argc, argv);
    qInstallMessageHandler(nullptr);
    QTranslator translator;
    const QDir translations(QApplication::applicationDirPath() + "/../share/kelvaro/translations");
    if (translator.load(QLocale(), "kelvaro", "_", translations.path()))
        QApplication::installTranslator(&translator);
    reportCrashes(parts->folders(), KELVARO_VERSION);
    addFolders(parts->library(), QApplication::arguments());
    Appearance appearance;
    int status = 0;
    {
        MainWindow window(partsOf(*parts, appearance, KELVARO_VERSION));
        window.show();
        const auto takeProfile = [&window](const QScreen* screen) {
            window.setScreenProfile(screenProfile(screen));
        };
        takeProfile(window.screen());
        QObject::connect(window.windowHandle(), &QWindow::screenChanged, &window, takeProfile);
        status = QApplication::exec();
    }
    parts->settings().flush();
    parts.reset();
    return status;
}

} // namespace
} // namespace kelvaro

int main(int argc, char** argv) {
    if (kelvaro::launchOptions().asksForScript) {
        std::printf("%s\n", std::string(kelvaro::scriptRefusal).c_str());
        return kelvaro::scriptRefusalStatus;
    }
    if (!kelvaro::hasDisplay()) kelvaro::endWithoutDisplay();
    return kelvaro::run(argc, argv);
}
