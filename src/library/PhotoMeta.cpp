#include "library/PhotoMeta.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

namespace kelvaro {

namespace {

// FileTime counts nanoseconds in 64 bits, which reach from 1677 to 2262; no photo is older.
constexpr int kFirstYear = 1800, kLastYear = 2260;

// Digits only, of exactly that length.
std::optional<int> digits(std::string_view text, std::size_t at, std::size_t length) {
    if (at + length > text.size()) return std::nullopt;
    const std::string_view part = text.substr(at, length);
    if (!std::all_of(part.begin(), part.end(), [](char c) { return c >= '0' && c <= '9'; })) {
        return std::nullopt;
    }
    int value = 0;
    std::from_chars(part.data(), part.data() + part.size(), value);
    return value;
}

int daysInMonth(int year, int month) {
    return static_cast<int>(dayNumber({year, month + 1, 1}) - dayNumber({year, month, 1}));
}

// "yyyy:MM:dd HH:mm:ss".
std::optional<CivilTime> civilTime(std::string_view text) {
    const auto year = digits(text, 0, 4), month = digits(text, 5, 2), day = digits(text, 8, 2);
    const auto hour = digits(text, 11, 2), minute = digits(text, 14, 2);
    const auto second = digits(text, 17, 2);
    if (text.size() != 19 || !year || !month || !day || !hour || !minute || !second) {
        return std::nullopt;
    }
    const bool isSeparated =
        text[4] == ':' && text[7] == ':' && text[10] == ' ' && text[13] == ':' && text[16] == ':';
    const bool isDate = *year >= kFirstYear && *year <= kLastYear && *month >= 1 && *month <= 12 &&
                        *day >= 1 && *day <= daysInMonth(*year, *month);
    if (!isSeparated || !isDate || *hour > 23 || *minute > 59 || *second > 59) return std::nullopt;
    return CivilTime{*year, *month, *day, *hour, *minute, *second};
}

// "+HH:MM" as seconds; places are at most 14 hours from UTC.
std::optional<int> offsetSeconds(std::string_view text) {
    const auto hours = digits(text, 1, 2), minutes = digits(text, 4, 2);
    if (text.size() != 6 || !hours || !minutes || text[3] != ':') return std::nullopt;
    if ((text[0] != '+' && text[0] != '-') || *hours > 14 || *minutes > 59) return std::nullopt;
    const int seconds = *hours * 3600 + *minutes * 60;
    return text[0] == '-' ? -seconds : seconds;
}

std::optional<double> positive(std::optional<double> value) {
    return value && *value > 0 ? value : std::nullopt;
}

bool startsWithoutCase(std::string_view text, std::string_view start) {
    const auto lower = [](char c) { return std::tolower(static_cast<unsigned char>(c)); };
    return text.size() >= start.size() &&
           std::equal(start.begin(), start.end(), text.begin(),
                      [&](char a, char b) { return lower(a) == lower(b); });
}

// Whether the model begins with a word of the make: "EASTMAN KODAK COMPANY", "KODAK DC240".
bool repeatsMake(std::string_view model, std::string_view make) {
    for (std::size_t at = 0; at < make.size();) {
        const std::size_t end = std::min(make.find(' ', at), make.size());
        const std::string_view word = make.substr(at, end - at);
        if (word.size() > 1 && startsWithoutCase(model, word)) return true;
        at = end + 1;
    }
    return false;
}

} // namespace

bool isValid(const PhotoMeta& meta, const Photo& photo) {
    return meta.schemaVersion == PhotoMeta::currentSchemaVersion && meta.size == photo.fileSize &&
           meta.mtime == photo.modified;
}

std::optional<std::string> cameraName(const std::optional<std::string>& make,
                                      const std::optional<std::string>& model) {
    if (!make || !model) return model ? model : make;
    return repeatsMake(*model, *make) ? *model : *make + " " + *model;
}

std::optional<CaptureTime> captureTime(const PhotoProperties& properties) {
    auto text = properties.exif.text("DateTimeOriginal");
    auto civil = text ? civilTime(*text) : std::nullopt;
    if (!civil) {
        text = properties.tiff.text("DateTime");
        civil = text ? civilTime(*text) : std::nullopt;
    }
    if (!civil) return std::nullopt;
    const auto offset = properties.exif.text("OffsetTimeOriginal");
    return CaptureTime{secondsAsUtc(*civil), offset ? offsetSeconds(*offset) : std::nullopt};
}

FileTime instantOf(const CaptureTime& time, const LocalCalendar& calendar) {
    if (time.offset) return {(time.onWall - *time.offset) * 1'000'000'000};
    return calendar.instant(civilFromSeconds(time.onWall));
}

PhotoMeta makePhotoMeta(const PhotoProperties& properties, const Photo& photo,
                        const LocalCalendar& calendar) {
    PhotoMeta meta;
    meta.mtime = photo.modified;
    meta.size = photo.fileSize;
    if (const auto size = properties.uprightSize()) {
        meta.width = size->width;
        meta.height = size->height;
    }
    if (const auto time = captureTime(properties)) {
        meta.taken = instantOf(*time, calendar);
        meta.takenOnWall = time->onWall;
        meta.takenOffset = time->offset;
    }
    meta.make = properties.tiff.text("Make");
    meta.camera = properties.tiff.text("Model");
    meta.lens = properties.exif.text("LensModel");
    if (!meta.lens) meta.lens = properties.auxiliary.text("LensModel");
    meta.focalLength = positive(properties.exif.number("FocalLength"));
    const auto iso = properties.exif.integer("ISOSpeedRatings");
    if (iso && *iso > 0 && *iso <= std::numeric_limits<int>::max()) meta.iso = int(*iso);
    meta.aperture = positive(properties.exif.number("FNumber"));
    meta.shutter = positive(properties.exif.number("ExposureTime"));
    meta.focal35 = positive(properties.exif.number("FocalLenIn35mmFilm"));
    return meta;
}

} // namespace kelvaro
