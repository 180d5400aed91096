// From the property dictionaries to the library's record and the panel's rows, the stored form of
// the record, and photos that moved.
#include "library/LibrarySamples.h"
#include "library/MetaCoding.h"
#include "library/MovedPhotos.h"
#include "library/PhotoInfo.h"

#include <gtest/gtest.h>

#include <random>

namespace kelvaro {
namespace {

using namespace test;

PhotoProperties taken(const char* original, const char* offset, const char* dateTime) {
    PhotoProperties properties;
    if (*original) properties.exif.set("DateTimeOriginal", std::string(original));
    if (*offset) properties.exif.set("OffsetTimeOriginal", std::string(offset));
    if (*dateTime) properties.tiff.set("DateTime", std::string(dateTime));
    return properties;
}

TEST(Meta, CaptureTimesWithAnOffsetDoNotDependOnTheMachine) {
    const auto nowhere = std::nullopt;
    const struct {
        const char *original, *offset, *dateTime;
        std::optional<FileTime> inBerlin, inTokyo;
    } cases[] = {
        {"2024:03:09 18:30:00", "+09:00", "", utc(2024, 3, 9, 9, 30), utc(2024, 3, 9, 9, 30)},
        {"2024:03:09 18:30:00", "-03:30", "", utc(2024, 3, 9, 22), utc(2024, 3, 9, 22)},
        {"2024:03:09 18:30:00", "", "", utc(2024, 3, 9, 17, 30), utc(2024, 3, 9, 9, 30)},
        {"2024:07:09 18:30:00", "", "", utc(2024, 7, 9, 16, 30), utc(2024, 7, 9, 9, 30)},
        {"", "+09:00", "2024:03:09 18:30:00", utc(2024, 3, 9, 9, 30), utc(2024, 3, 9, 9, 30)},
        {"0000:00:00 00:00:00", "", "2024:03:09 18:30:00", utc(2024, 3, 9, 17, 30),
         utc(2024, 3, 9, 9, 30)},
        {"2024:03:09 18:30:00", "+99:99", "", utc(2024, 3, 9, 17, 30), utc(2024, 3, 9, 9, 30)},
        {"2024:03:09 18:30:00", "Z", "", utc(2024, 3, 9, 17, 30), utc(2024, 3, 9, 9, 30)},
        {"1961:04:12 06:07:00", "+00:00", "", utc(1961, 4, 12, 6, 7), utc(1961, 4, 12, 6, 7)},
        {"2024:02:30 18:30:00", "", "", nowhere, nowhere},
        {"2023:02:29 18:30:00", "", "", nowhere, nowhere},
        {"2024:13:01 18:30:00", "", "", nowhere, nowhere},
        {"2024:03:09 24:30:00", "", "", nowhere, nowhere},
        {"9999:01:01 00:00:00", "", "", nowhere, nowhere},
        {"2024-03-09T18:30:00", "", "", nowhere, nowhere},
        {"    :  :     :  :  ", "", "", nowhere, nowhere},
        {"", "", "", nowhere, nowhere},
    };
    const auto berlin = makeIcuCalendar("Europe/Berlin"), tokyo = makeIcuCalendar("Asia/Tokyo");
    for (const auto& c : cases) {
        const PhotoProperties properties = taken(c.original, c.offset, c.dateTime);
        EXPECT_EQ(makePhotoMeta(properties, photoAt("/p/x.jpg"), *berlin).taken, c.inBerlin)
            << c.original << c.offset;
        EXPECT_EQ(makePhotoMeta(properties, photoAt("/p/x.jpg"), *tokyo).taken, c.inTokyo)
            << c.original << c.offset;
    }
}

TEST(Meta, ClocksThatAreChanged) {
    const auto berlin = makeIcuCalendar("Europe/Berlin");
    const struct {
        const char* zone;
        CivilTime wall;
        FileTime instant;
    } cases[] = {
        {"Europe/Berlin", {2024, 3, 31, 1, 59, 59}, utc(2024, 3, 31, 0, 59, 59)},
        {"Europe/Berlin", {2024, 3, 31, 3, 0, 0}, utc(2024, 3, 31, 1)},
        {"Europe/Berlin", {2024, 3, 31, 2, 30, 0}, utc(2024, 3, 31, 1, 30)},   // skipped
        {"Europe/Berlin", {2024, 10, 27, 2, 30, 0}, utc(2024, 10, 27, 0, 30)}, // twice
        {"Europe/Berlin", {2024, 10, 27, 3, 0, 0}, utc(2024, 10, 27, 2)},
        // Before there were time zones, 53 minutes and 28 seconds ahead; and long from now.
        {"Europe/Berlin", {1850, 1, 1, 0, 0, 0}, utc(1849, 12, 31, 23, 6, 32)},
        {"Europe/Berlin", {2150, 7, 1, 12, 0, 0}, utc(2150, 7, 1, 10)},
        {"America/New_York", {2024, 3, 10, 2, 30, 0}, utc(2024, 3, 10, 7, 30)},
        {"America/New_York", {2024, 11, 3, 1, 30, 0}, utc(2024, 11, 3, 5, 30)},
        // Summer ends in April, by half an hour.
        {"Australia/Lord_Howe", {2024, 4, 7, 1, 45, 0}, utc(2024, 4, 6, 14, 45)},
        {"Australia/Lord_Howe", {2024, 4, 7, 2, 0, 0}, utc(2024, 4, 6, 15, 30)},
        {"Pacific/Apia", {2011, 12, 30, 12, 0, 0}, utc(2011, 12, 30, 22)}, // no such day
        {"Pacific/Apia", {2011, 12, 31, 0, 0, 0}, utc(2011, 12, 30, 10)}};
    for (const auto& c : cases)
        EXPECT_EQ(makeIcuCalendar(c.zone)->instant(c.wall), c.instant)
            << c.zone << secondsAsUtc(c.wall);
    for (const char* zone : {"Europe/Berlin", "Australia/Lord_Howe", "Asia/Kathmandu", "UTC"}) {
        const auto calendar = makeIcuCalendar(zone);
        std::mt19937_64 anyTime(6);
        for (int i = 0; i < 2000; ++i) { // 1843 to 2096
            const FileTime time{(std::int64_t(anyTime() % 8'000'000'000) - 4'000'000'000) *
                                kSecond};
            const CivilTime wall = calendar->civil(time);
            EXPECT_EQ(calendar->civil(calendar->instant(wall)), wall) << zone << time.nanoseconds;
        }
    }
    std::mt19937_64 random(5);
    for (int i = 0; i < 2000; ++i) {
        const auto seconds = std::int64_t(random() % 8'000'000'000) - 4'000'000'000;
        EXPECT_EQ(secondsAsUtc(civilFromSeconds(seconds)), seconds);
    }
    EXPECT_EQ(berlin->civil({-1}), (CivilTime{1970, 1, 1, 0, 59, 59})); // a nanosecond before
}

TEST(Meta, CamerasAreNamedOnce) {
    using Text = std::optional<std::string>;
    const struct {
        Text make, model, name;
    } cases[] = {{"Canon", "Canon EOS R6", "Canon EOS R6"},
                 {"NIKON CORPORATION", "NIKON D300", "NIKON D300"},
                 {"EASTMAN KODAK COMPANY", "KODAK DC240", "KODAK DC240"},
                 {"SONY", "ILCE-7M3", "SONY ILCE-7M3"},
                 {"Apple", "iPhone 13", "Apple iPhone 13"},
                 {"nikon", "NIKON D1", "NIKON D1"},
                 {{}, "X", "X"},
                 {"Only Make", {}, "Only Make"},
                 {{}, {}, {}}};
    for (const auto& c : cases)
        EXPECT_EQ(cameraName(c.make, c.model), c.name);
}

TEST(Meta, ValuesThatCannotBeAreAbsent) {
    PhotoProperties properties;
    for (const char* key : {"FNumber", "ExposureTime", "FocalLength", "FocalLenIn35mmFilm"})
        properties.exif.set(key, 0.0);
    properties.exif.set("ISOSpeedRatings", std::vector<double>{0, 100});
    properties.tiff.set("Model", std::string("  "));
    const auto calendar = makeIcuCalendar("UTC");
    const Photo photo = photoAt("/p/x.jpg");
    PhotoMeta expected;
    expected.size = photo.fileSize;
    expected.mtime = photo.modified;
    EXPECT_EQ(makePhotoMeta(properties, photo, *calendar), expected);
    properties.exif.set("ISOSpeedRatings", std::vector<double>{320, 100});
    properties.storedSize = PixelSize{300, 200};
    properties.orientation = 6;
    expected.iso = 320;
    expected.width = 200;
    expected.height = 300;
    EXPECT_EQ(makePhotoMeta(properties, photo, *calendar), expected);
}

TEST(Meta, StoredFormComesBackAndDamageIsNoticed) {
    const auto berlin = makeIcuCalendar("Europe/Berlin"), tokyo = makeIcuCalendar("Asia/Tokyo");
    PhotoMeta full;
    full.make = "Arbel";
    full.camera = "Arbel \xFF M4";
    full.lens = "";
    full.focalLength = 6.765;
    full.iso = 100;
    full.aperture = 1.8;
    full.shutter = 1 / 3.0;
    full.focal35 = 26;
    full.width = 6000;
    full.height = 4000;
    full.size = 77;
    full.mtime = {-5};
    full.takenOnWall = secondsAsUtc({2024, 3, 9, 18, 30, 0});
    full.taken = utc(2024, 3, 9, 17, 30);
    PhotoMeta withOffset = full, empty;
    withOffset.takenOffset = 32400;
    withOffset.taken = utc(2024, 3, 9, 9, 30);
    for (const PhotoMeta& meta : {full, withOffset, empty}) {
        const std::string bytes = encodedMeta(meta);
        EXPECT_EQ(decodedMeta(bytes, meta.size, meta.mtime, *berlin), meta);
        for (std::size_t length = 0; length < bytes.size(); ++length)
            EXPECT_FALSE(decodedMeta(bytes.substr(0, length), 1, {}, *berlin)) << length;
        EXPECT_FALSE(decodedMeta(bytes + "x", 1, {}, *berlin));
    }
    // After a journey a time without offset is read where the user is now.
    EXPECT_EQ(decodedMeta(encodedMeta(full), 1, {}, *tokyo)->taken, utc(2024, 3, 9, 9, 30));
    EXPECT_EQ(decodedMeta(encodedMeta(withOffset), 1, {}, *tokyo)->taken, utc(2024, 3, 9, 9, 30));
    PhotoMeta old = full;
    old.schemaVersion = 0;
    EXPECT_FALSE(decodedMeta(encodedMeta(old), 1, {}, *berlin));
    EXPECT_FALSE(isValid(old, photoAt("/p/x.jpg", full.mtime, full.size)));
    EXPECT_TRUE(isValid(full, photoAt("/p/x.jpg", full.mtime, full.size)));
    EXPECT_FALSE(isValid(full, photoAt("/p/x.jpg", full.mtime, 78)));
    EXPECT_FALSE(isValid(full, photoAt("/p/x.jpg", {-4}, full.size)));
}

std::string shown(const PhotoInfo& info, const std::string& key) {
    const auto rules = makeIcuTextRules("en");
    const auto calendar = makeIcuCalendar("UTC");
    for (const InfoRow& row : infoRows(info, *rules, *calendar)) {
        if (row.key == key) return row.text;
    }
    return "-";
}

TEST(Info, ValuesAreSpeltForPeople) {
    const auto with = [](auto set) {
        PhotoInfo info;
        set(info);
        return info;
    };
    const struct {
        const char* key;
        PhotoInfo info;
        const char* text;
    } cases[] = {
        {"bias", with([](auto& i) { i.bias = 0; }), "0 EV"},
        {"bias", with([](auto& i) { i.bias = 0.33; }), "+0.3 EV"},
        {"bias", with([](auto& i) { i.bias = -1; }), "-1.0 EV"},
        {"bias", with([](auto& i) { i.bias = -0.01; }), "0 EV"},
        {"aperture", with([](auto& i) { i.aperture = 1.8; }), "ƒ/1.8"},
        {"shutter", with([](auto& i) { i.shutter = 0.004; }), "1/250 s"},
        {"shutter", with([](auto& i) { i.shutter = 30; }), "30 s"},
        {"iso", with([](auto& i) { i.iso = 102400; }), "ISO 102400"},
        {"focal", with([](auto& i) { i.focal = 6.765; }), "6.77 mm"},
        {"focal35", with([](auto& i) { i.focal35 = 26; }), "26 mm equiv."},
        {"megapixels", with([](auto& i) { i.megapixels = 24.16; }), "24.2 MP"},
        {"dimensions", with([](auto& i) {
             i.dimensions = PixelSize{6016, 4016};
         }),
         "6016 × 4016"},
        {"latitude", with([](auto& i) { i.latitude = -33.8568; }), "33.856800° S"},
        {"longitude", with([](auto& i) { i.longitude = 0; }), "0.000000° E"},
        {"altitude", with([](auto& i) { i.altitude = -12.5; }), "-12.5 m"},
        {"size", with([](auto& i) { i.iso = 1, i.size = 999; }), "999 bytes"},
        {"size", with([](auto& i) { i.iso = 1, i.size = 999'960; }), "1.0 MB"},
        {"modified", with([](auto& i) { i.iso = 1, i.modified = utc(2024, 3, 9, 7, 5); }),
         "9 March 2024 at 07:05:00"},
        {"taken", with([](auto& i) {
             i.taken = CaptureTime{0, -12600};
         }),
         "1 January 1970 at 00:00:00 (-03:30)"},
        {"lens", with([](auto& i) { i.iso = 1; }), "-"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(shown(c.info, c.key), c.text) << c.key;
    PhotoInfo fileOnly;
    fileOnly.size = 5;
    fileOnly.format = "JPEG (JPG)";
    EXPECT_EQ(shown(fileOnly, "size"), "-"); // the panel says that there is nothing
}

TEST(Info, TablesAndFormats) {
    const auto info = [](const char* key, std::int64_t value) {
        PhotoProperties properties;
        properties.exif.set(key, value);
        return makePhotoInfo(properties, {}, photoAt("/p/x.dng"));
    };
    using Text = std::optional<std::string>;
    const Text programs[] = {
        {},         "Manual", "Program",  "Aperture priority", "Shutter priority",
        "Creative", "Action", "Portrait", "Landscape",         {}};
    for (int i = 0; i < 10; ++i)
        EXPECT_EQ(info("ExposureProgram", i).program, programs[i]) << i;
    const Text meterings[] = {{},           "Average",       "Center-weighted", "Spot",
                              "Multi-spot", "Multi-segment", "Partial",         {}};
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(info("MeteringMode", i).metering, meterings[i]) << i;
    EXPECT_EQ(info("Flash", 25).flash, "Fired");
    EXPECT_EQ(info("Flash", 16).flash, "Did not fire");
    EXPECT_EQ(info("WhiteBalance", 0).whiteBalance, "Auto");
    EXPECT_EQ(info("WhiteBalance", 4).whiteBalance, "Manual");
    EXPECT_EQ(info("Flash", 0).format, "Digital Negative (DNG)");
    for (const auto& [extension, text] :
         std::map<std::string, std::string>{{"mrw", "MRW"},
                                            {"erf", "ERF"},
                                            {"mos", "MOS"},
                                            {"Jpg", "JPEG (JPG)"},
                                            {"heif", "HEIF (HEIF)"},
                                            {"3fr", "Hasselblad RAW (3FR)"},
                                            {"tif", "TIFF (TIF)"}})
        EXPECT_EQ(formatText(extension), text);
}

TEST(Moved, OnlyCertainPairsCount) {
    PhotoMeta meta;
    meta.size = 1000;
    meta.iso = 100;
    meta.takenOnWall = 5;
    PhotoMeta otherSize = meta, otherIso = meta, timeless = meta, later = meta;
    otherSize.size = 1001;
    otherIso.iso = 200;
    timeless.takenOnWall.reset();
    later.mtime = {99}; // a copy may have another date
    const auto one = [](const char* url, const PhotoMeta& m) {
        return std::pair<PhotoUrl, SharedMeta>(url, std::make_shared<const PhotoMeta>(m));
    };
    using Moved = std::vector<MovedPhoto>;
    EXPECT_EQ(
        movedPhotos({one("/a/1.jpg", meta)}, {one("/b/x.JPG", later), one("/b/y.jpg", otherIso)}),
        (Moved{{"/a/1.jpg", "/b/x.JPG"}}));
    EXPECT_TRUE(movedPhotos({one("/a/1.jpg", meta)}, {one("/b/1.jpg", otherSize)}).empty());
    EXPECT_TRUE(movedPhotos({one("/a/1.jpg", meta)}, {one("/b/1.dng", meta)}).empty());
    EXPECT_TRUE(movedPhotos({one("/a/1.jpg", timeless)}, {one("/b/1.jpg", timeless)}).empty());
    EXPECT_TRUE(movedPhotos({one("/a/1.jpg", meta)}, {one("/b/1.jpg", meta), one("/b/2.jpg", meta)})
                    .empty());
    EXPECT_TRUE(movedPhotos({one("/a/1.jpg", meta), one("/a/2.jpg", meta)}, {one("/b/1.jpg", meta)})
                    .empty());
    EXPECT_TRUE(movedPhotos({{"/a/1.jpg", nullptr}}, {{"/b/1.jpg", nullptr}}).empty());
}

} // namespace
} // namespace kelvaro
