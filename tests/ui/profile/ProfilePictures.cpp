// Draws the profile of a rich and of a nearly empty library, narrow and wide, dark and light, into
// PNG files, for people to look at: profile_pictures OUTPUT
#include "ui/profile/ProfileScene.h"

#include <QDir>

#include <cstdio>

namespace kelvaro {
namespace {

class Pictures : public ProfileScene {
public:
    explicit Pictures(QString output) : output_(std::move(output)) {
        QDir().mkpath(output_);
        settings.set("profileAsked", true);
        settings.set("profileName", std::string("Ada"));
        settings.set("profileIcon", std::string("mountain"));
    }

    void draw(const char* name, int photoCount) {
        const CivilTime now =
            services.calendar->civil(timeFromSeconds(services.clock->wallSeconds()));
        settings.set("folders",
                     std::vector<std::string>{life(name, photoCount, dayNumber(now)).string()});
        settings.set("profilePeriod", std::string("allTime"));
        open();
        until([&] { return library->isIdle(); });
        mark();
        show();
        until([&] { return (*profile->model().profile()) != nullptr && library->isIdle(); });
        const QString title(name);
        take(title + "-all");
        if (photoCount > 100) {
            profile->model().setPeriod({ProfilePeriod::Kind::thisYear});
            take(title + "-year");
            profile->model().setPeriod({ProfilePeriod::Kind::lastMonth});
            take(title + "-month");
            window->profilePage().picture().save(output_ + "/shared.png");
            find<QPushButton>("profileTables")->click();
            profile->model().setPeriod({});
            take(title + "-tables");
        }
        end();
    }

private:
    // Hearts and edits, as one goes through one's photos.
    void mark() {
        const auto photos = library->view().get()->photos;
        std::vector<PhotoUrl> hearts;
        Adjustments edit;
        edit.exposure = 0.4;
        for (std::size_t at = 0; at < photos.size(); at += 11)
            hearts.push_back(photos[at]->url);
        library->setFavorite(hearts, true);
        for (std::size_t at = 0; at < std::min<std::size_t>(photos.size() / 3, 80); ++at)
            library->setAdjustments(photos[at * 2]->url, edit);
        library->waitForWrites();
    }
    void show() { window->commands().action(CommandId::profile)->trigger(); }
    void rest(int milliseconds) {
        QElapsedTimer clock;
        clock.start();
        while (clock.elapsed() < milliseconds || !library->isIdle())
            QApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 20);
    }
    void take(const QString& name) {
        for (const bool dark : {true, false}) {
            library->setAppearance(dark ? AppearanceMode::dark : AppearanceMode::light);
            for (const QSize size : {QSize(1280, 800), QSize(720, 900), QSize(1600, 1900)}) {
                window->resize(size);
                rest(150);
                const QString file =
                    QString("%1-%2-%3.png").arg(name, dark ? "dark" : "light").arg(size.width());
                window->grab().save(output_ + "/" + file);
                std::printf("%s\n", qPrintable(file));
            }
        }
    }

    QString output_;
};

} // namespace
} // namespace kelvaro

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM") && !qEnvironmentVariableIsSet("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    if (argc != 2) {
        std::fputs("usage: profile_pictures OUTPUT\n", stderr);
        return 2;
    }
    kelvaro::Pictures pictures(argv[1]);
    pictures.draw("rich", 1500);
    pictures.draw("young", 7);
    return 0;
}
