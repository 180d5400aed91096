// The profile of a hundred thousand photos, from the library's table to the painted page. Prints
// each step with its aim beside it; processor time tells what a quiet machine would take. Run it
// with QT_QPA_PLATFORM=offscreen or under Xvfb.
#include "library/PhotoTable.h"
#include "platform/system/IcuCalendar.h"
#include "platform/system/IcuTextRules.h"
#include "profile/Profile.h"
#include "profile/WallTime.h"
#include "ui/profile/ProfileSheet.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPixmap>

#include <algorithm>
#include <array>
#include <cstdio>
#include <random>
#include <time.h>

namespace kelvaro {
namespace {

constexpr int photoCount = 100'000, photosPerFolder = 1000, rounds = 15;
const CivilTime today{2024, 12, 31, 12, 0, 0};

// A hundred folders of photos of nine years.
std::unique_ptr<PhotoTable> library(const TextRules& rules, const LocalCalendar& calendar) {
    std::mt19937 random(7);
    const auto below = [&](int end) {
        return static_cast<int>(random() % static_cast<unsigned>(end));
    };
    const std::array<double, 6> apertures{1.4, 1.8, 2.8, 4, 5.6, 8};
    auto table = std::make_unique<PhotoTable>(rules, calendar);
    const std::int64_t newest = dayNumber(today);
    for (int folder = 0; folder < photoCount / photosPerFolder; ++folder) {
        const std::string url = "/photos/" + std::to_string(folder);
        std::vector<Photo> photos;
        std::vector<std::pair<PhotoUrl, SharedMeta>> metas;
        for (int i = 0; i < photosPerFolder; ++i) {
            photos.push_back(makePhoto(url, "IMG_" + std::to_string(10'000 + i) + ".jpg",
                                       PhotoKind::image, 1000, {}, {}));
            PhotoMeta meta;
            meta.size = 1000;
            meta.takenOnWall = (newest - below(3285)) * kSecondsPerDay + below(86'400);
            meta.camera = "A camera with a long name " + std::to_string(below(12));
            meta.lens = "A lens with a long name 24-70mm F2.8 " + std::to_string(below(30));
            meta.focalLength = 10 + below(400);
            meta.iso = 100 << below(8);
            meta.aperture = apertures[static_cast<std::size_t>(below(6))];
            meta.shutter = 1.0 / (1 << below(13));
            metas.emplace_back(photos.back().url, std::make_shared<const PhotoMeta>(meta));
        }
        table->setFolder(FolderListing::make(url, std::move(photos), rules, nullptr));
        table->setMeta(metas);
        for (int i = 0; i < photosPerFolder; i += 7)
            table->setEdit(metas[static_cast<std::size_t>(i)].first, true,
                           timeFromSeconds(double(newest - below(3285)) * 86'400));
        for (int i = 0; i < photosPerFolder; i += 10)
            table->setFavorite(metas[static_cast<std::size_t>(i)].first, true);
    }
    return table;
}

double processorMs() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

struct Times {
    std::vector<double> wall, processor;
};

template<class Work>
Times measured(Work work) {
    Times times;
    for (int round = 0; round < rounds; ++round) {
        QElapsedTimer clock;
        clock.start();
        const double begun = processorMs();
        work();
        times.processor.push_back(processorMs() - begun);
        times.wall.push_back(double(clock.nsecsElapsed()) / 1e6);
    }
    std::ranges::sort(times.wall);
    std::ranges::sort(times.processor);
    return times;
}

double told(const char* step, const Times& times, const char* aim) {
    std::printf("%-44s %8.1f %8.1f %10.1f   %s\n", step, times.wall.front(), times.wall[rounds / 2],
                times.processor[rounds / 2], aim);
    return times.processor[rounds / 2];
}

void run() {
    const auto rules = makeIcuTextRules("en");
    const auto calendar = makeIcuCalendar("Europe/Berlin");
    const auto table = library(*rules, *calendar);
    std::printf("%-44s %8s %8s %10s   %s\n", "100,000 photos; ms", "best", "median", "processor",
                "aim");
    ProfileSource source;
    Profile profile;
    double opening =
        told("collect the records from the library",
             measured([&] { source = makeProfileSource(table->facts(), *calendar, {}); }), "");
    told("statistics and tags, this year",
         measured([&] { profile = makeProfile(source, {ProfilePeriod::Kind::thisYear}, today); }),
         "60");
    opening += told("statistics and tags, all time", measured([&] {
                        profile = makeProfile(source, {ProfilePeriod::Kind::allTime}, today);
                    }),
                    "60");
    Appearance appearance;
    appearance.apply(true, false);
    opening += told("build, lay out and paint the page", measured([&] {
                        ProfileSheet sheet(appearance, [&](std::int64_t day) {
                            return QString::fromStdString(
                                rules->dayHeading(civilFromSeconds(day * kSecondsPerDay)));
                        });
                        sheet.setGreeting("Good evening, Ada", "All time", IconName::person);
                        sheet.resize(1280, 800);
                        sheet.show(profile, today);
                        sheet.grab();
                    }),
                    "");
    std::printf("%-44s %8s %8s %10.1f   %s\n", "the page opens, all of the above", "", "", opening,
                "150");
}

} // namespace
} // namespace kelvaro

int main(int argc, char** argv) {
    const QApplication application(argc, argv);
    kelvaro::run();
    return 0;
}
