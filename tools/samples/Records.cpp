#include "samples/Records.h"

#include <array>
#include <cstdio>

namespace kelvaro::samples {
namespace {

const CameraModel kField{"Veskar", "Veskar F2", "VF2-004417", "Veskar F2 1.03", 1.0};
const CameraModel kTravel{"Orrinfield", "Orrinfield Wren", "88120533", "Wren 2.1", 1.5};
const CameraModel kPhone{"Tamsel", "Tamsel Nine", "", "Tamsel 9.4.1", 6.0};

const Lens kStandardZoom{"Veskar", "Veskar 24-70mm F2.8", 24, 70, 2.8, 2.8};
const Lens kPrime{"Veskar", "Veskar Clear 35mm F1.8", 35, 35, 1.8, 1.8};
const Lens kTravelZoom{"Orrinfield", "Orrinfield 16-80mm F4-5.6", 16, 80, 4, 5.6};
const Lens kPhoneLens{"Tamsel", "Tamsel Nine main camera 4.3mm f/1.8", 4.3, 4.3, 1.8, 1.8};

const Place kLake{46.4178, 11.2671, 482};
const Place kRidge{46.5093, 11.7744, 1863};

struct Shot {
    FileKind kind;
    SceneKind scene;
    PixelSize size;
    int orientation;
    const CameraModel* camera;
    const Lens* lens;
    double focalLength, fNumber;
    int numerator, denominator, iso;
    double bias;
    int day, hour, minute, second; // of May 2025
    const char* artist;
    const Place* place;
};

using enum FileKind;
using enum SceneKind;
const char* const kIlka = "Ilka Morwen";
const char* const kJasper = "Jasper Tolune";

const std::array<Shot, kStandardCount> kShots = {{
    {dng,
     lakeAtNoon,
     {3000, 2000},
     1,
     &kField,
     &kStandardZoom,
     28,
     8,
     1,
     320,
     100,
     0, //
     3,
     11,
     24,
     7,
     kIlka,
     nullptr},
    {dng,
     eveningHills,
     {900, 1200},
     8,
     &kTravel,
     &kTravelZoom,
     45,
     5.6,
     1,
     60,
     800,
     -0.67, //
     3,
     20,
     31,
     52,
     kJasper,
     nullptr},
    {jpeg,
     lakeAtNoon,
     {1500, 1000},
     1,
     &kField,
     &kPrime,
     35,
     5.6,
     1,
     800,
     100,
     0, //
     3,
     11,
     25,
     40,
     kIlka,
     &kLake},
    {jpeg,
     eveningHills,
     {1500, 1000},
     1,
     &kField,
     &kStandardZoom,
     50,
     4,
     1,
     125,
     400,
     0.33, //
     3,
     20,
     12,
     15,
     kIlka,
     nullptr},
    {jpeg,
     autumnFarm,
     {960, 1280},
     6,
     &kTravel,
     &kTravelZoom,
     24,
     5.6,
     1,
     250,
     200,
     0, //
     4,
     9,
     48,
     3,
     kJasper,
     nullptr},
    {jpeg,
     autumnFarm,
     {1280, 960},
     3,
     &kTravel,
     &kTravelZoom,
     80,
     8,
     1,
     200,
     200,
     0, //
     4,
     9,
     52,
     30,
     kJasper,
     nullptr},
    {jpeg,
     balloonMorning,
     {960, 1280},
     8,
     &kTravel,
     &kTravelZoom,
     55,
     5.6,
     1,
     500,
     160,
     0.67, //
     4,
     6,
     58,
     44,
     kJasper,
     nullptr},
    {heic,
     balloonMorning,
     {1280, 960},
     1,
     &kPhone,
     &kPhoneLens,
     4.3,
     1.8,
     1,
     1250,
     50,
     0, //
     4,
     7,
     2,
     11,
     kIlka,
     &kRidge},
    {png16,
     winterPeaks,
     {1500, 1000},
     1,
     &kField,
     &kStandardZoom,
     70,
     11,
     1,
     500,
     100,
     1, //
     5,
     13,
     5,
     59,
     kIlka,
     nullptr},
    {tiff16,
     blueHour,
     {1500, 1000},
     1,
     &kField,
     &kPrime,
     35,
     2.8,
     5,
     2,
     1600,
     -1, //
     5,
     21,
     40,
     20,
     kIlka,
     nullptr},
    {jpeg,
     winterPeaks,
     {1600, 800},
     1,
     &kPhone,
     &kPhoneLens,
     4.3,
     1.8,
     1,
     2000,
     50,
     0, //
     5,
     13,
     11,
     37,
     kJasper,
     &kRidge},
    {jpeg,
     blueHour,
     {1500, 1000},
     1,
     &kTravel,
     &kTravelZoom,
     16,
     4,
     1,
     8,
     3200,
     0, //
     5,
     21,
     33,
     8,
     kJasper,
     nullptr},
    {heic,
     lakeAtNoon,
     {960, 1280},
     6,
     &kPhone,
     &kPhoneLens,
     4.3,
     1.8,
     1,
     1600,
     50,
     0, //
     6,
     12,
     16,
     25,
     kJasper,
     &kLake},
    {jpeg,
     balloonMorning,
     {1500, 1000},
     1,
     &kField,
     &kStandardZoom,
     24,
     8,
     1,
     400,
     100,
     0, //
     6,
     6,
     41,
     2,
     kIlka,
     nullptr},
}};

std::string formatted(const char* format, int a, int b, int c, int d) {
    char text[64];
    std::snprintf(text, sizeof text, format, a, b, c, d);
    return text;
}

// Each maker counts its files in its own way.
std::string fileName(const Shot& shot, int index, int day) {
    static const char* const extensions[] = {"dng", "jpg", "png", "tif", "heic"};
    const std::string extension = extensions[int(shot.kind)];
    if (shot.camera == &kField)
        return formatted("VF2_%04d", 412 + index, 0, 0, 0) + "." + extension;
    if (shot.camera == &kTravel)
        return formatted("WREN%05d", 1180 + 3 * index, 0, 0, 0) +
               (shot.kind == jpeg ? ".JPG" : "." + extension);
    return formatted("2025-%02d-%02d %02d.%02d", 5 + day / 31, 1 + day % 31, shot.hour,
                     shot.minute) +
           formatted(".%02d #%d.", shot.second, index, 0, 0) + extension;
}

} // namespace

std::vector<PhotoRecord> sampleRecords(int count) {
    std::vector<PhotoRecord> records;
    for (int index = 0; index < count; ++index) {
        const Shot& shot = kShots[std::size_t(index % kStandardCount)];
        const int round = index / kStandardCount;
        const int day = shot.day - 1 + 4 * round; // counted from the first of May
        PhotoRecord r;
        r.name = fileName(shot, index, day);
        r.kind = shot.kind;
        r.scene = shot.scene;
        r.seed = std::uint32_t(index + 1);
        r.size = shot.size;
        r.orientation = shot.orientation;
        r.camera = *shot.camera;
        r.lens = *shot.lens;
        r.focalLength = shot.focalLength;
        r.fNumber = shot.fNumber;
        r.exposureNumerator = shot.numerator;
        r.exposureDenominator = shot.denominator;
        r.iso = shot.iso;
        r.biasStops = shot.bias;
        // Months of thirty days are enough for made-up dates.
        r.taken = formatted("%04d:%02d:%02d ", 2025 + (day / 30 + 4) / 12, 1 + (day / 30 + 4) % 12,
                            1 + day % 30 % 28, 0) +
                  formatted("%02d:%02d:%02d", shot.hour, shot.minute, shot.second, 0);
        r.offset = "+02:00";
        r.artist = shot.artist;
        r.description = Scene::title(shot.scene);
        if (shot.place) r.place = *shot.place;
        r.renderedStops = 0.6 + 0.5 * shot.bias + (shot.scene == blueHour ? 1.8 : 0.0);
        records.push_back(std::move(r));
    }
    return records;
}

} // namespace kelvaro::samples
