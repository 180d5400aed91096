// A window over the photos of somebody who has photographed for three years: bursts at weekends,
// evenings more than mornings, a favourite camera and a lens that stays on it. The same photos
// every time for the same count.
#pragma once

#include "samples/Metadata.h"
#include "ui/WindowScene.h"

#include <random>

namespace kelvaro {

class ProfileScene : public WindowScene {
public:
    // Small JPEG files with EXIF data; the day of the last photo is `newest` (days since 1970).
    std::filesystem::path life(const std::string& folder, int count, std::int64_t newest) {
        std::filesystem::create_directories(root / folder);
        QImage image(48, 32, QImage::Format_RGB32);
        image.fill(QColor(120, 130, 140));
        std::int64_t day = newest, second = 0;
        int left = 0; // photos of this outing
        for (int at = 1; at <= count; ++at) {
            if (left-- <= 0) {
                day -= 1 + below(2 * 1000 / std::max(1, count / 14));
                // Weekends are better days.
                if (below(3) && (day + 3) % 7 < 5) day -= (day + 3) % 7 + 1;
                left = below(5) ? 3 + below(18) : 30 + below(40);
                const int hours[] = {7, 9, 11, 14, 16, 17, 17, 18, 18, 19, 19, 20, 21};
                second = hours[below(13)] * 3600 + below(3600);
            }
            second += below(4) ? 1 + below(90) : 1;
            const auto name = "IMG_" + std::to_string(10000 + at) + ".jpg";
            const auto file = root.path() / folder / name;
            EXPECT_TRUE(image.save(QString::fromStdString(file.string()), "JPEG", 60));
            samples::writeExif(file, samples::exifOf(record(day, second), {48, 32}));
        }
        return std::filesystem::canonical(root.path() / folder);
    }

private:
    samples::PhotoRecord record(std::int64_t day, std::int64_t second) {
        const samples::CameraModel big{"Arbel", "Arbel M4 II", "", "2.01", 1};
        const samples::CameraModel small{"Quillon", "Quillon QX-100", "", "3.0", 1.5};
        const samples::CameraModel phone{"Hello", "Pixel Nine", "", "17", 7.6};
        samples::PhotoRecord made;
        const int which = below(10);
        made.camera = which < 6 ? big : which < 9 ? small : phone;
        if (which < 4)
            made.lens = {"Arbel", "Arbel 50mm F1.4", 50, 50, 1.4, 1.4};
        else if (which < 6)
            made.lens = {"Arbel", "Arbel 70-200mm F2.8", 70, 200, 2.8, 2.8};
        else if (which < 9)
            made.lens = {"Quillon", "Quillon 23mm F2", 23, 23, 2, 2};
        else
            made.lens = {"Hello", "Pixel Nine back camera 6.9mm f/1.68", 6.9, 6.9, 1.68, 1.68};
        made.focalLength = made.lens.shortest +
                           below(static_cast<int>(made.lens.longest - made.lens.shortest) + 1);
        const double stops[] = {1, 1, 1, 1.41, 1.41, 2, 2.8, 4};
        made.fNumber = std::round(made.lens.widest * stops[below(8)] * 10) / 10;
        const int dark = second < 8 * 3600 || second > 19 * 3600 ? 3 : 0;
        made.iso = 100 << std::min(7, below(3) * below(2) + dark + below(2));
        const int speeds[] = {2000, 1000, 500, 500, 250, 250, 125, 60, 30};
        made.exposureDenominator = speeds[std::min(8, below(6) + dark)];
        const CivilTime time = civilFromSeconds(day * 86'400 + second);
        char text[32];
        std::snprintf(text, sizeof text, "%04d:%02d:%02d %02d:%02d:%02d", time.year, time.month,
                      time.day, time.hour, time.minute, time.second);
        made.taken = text;
        made.offset = "+01:00";
        return made;
    }
    int below(int end) { return static_cast<int>(random_() % static_cast<unsigned>(end)); }

    std::mt19937 random_{11};
};

} // namespace kelvaro
