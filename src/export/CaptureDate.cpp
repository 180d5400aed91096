#include "export/CaptureDate.h"

#include <cmath>
#include <ctime>

namespace kelvaro {

namespace {

std::optional<int> digits(std::string_view text) {
    int value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') return std::nullopt;
        value = 10 * value + (c - '0');
    }
    return value;
}

} // namespace

std::optional<std::chrono::year_month_day> exifDay(std::string_view text) {
    static constexpr std::string_view pattern = "yyyy:MM:dd HH:mm:ss";
    if (text.size() != pattern.size()) return std::nullopt;
    for (const std::size_t i : {4, 7, 10, 13, 16})
        if (text[i] != pattern[i]) return std::nullopt;
    const auto year = digits(text.substr(0, 4)), month = digits(text.substr(5, 2));
    const auto day = digits(text.substr(8, 2)), hour = digits(text.substr(11, 2));
    const auto minute = digits(text.substr(14, 2)), second = digits(text.substr(17, 2));
    if (!year || !month || !day || !hour || !minute || !second) return std::nullopt;
    if (*year == 0 || *hour > 23 || *minute > 59 || *second > 59) return std::nullopt;
    const std::chrono::year_month_day date{std::chrono::year(*year),
                                           std::chrono::month(unsigned(*month)),
                                           std::chrono::day(unsigned(*day))};
    return date.ok() ? std::optional(date) : std::nullopt;
}

std::chrono::year_month_day captureDay(const PhotoProperties& properties, FileTime created) {
    for (const auto& text :
         {properties.exif.text("DateTimeOriginal"), properties.exif.text("DateTimeDigitized"),
          properties.tiff.text("DateTime")})
        if (const auto day = text ? exifDay(*text) : std::nullopt) return *day;
    const auto seconds = std::time_t(std::floor(created.seconds()));
    std::tm local{};
    ::localtime_r(&seconds, &local);
    return {std::chrono::year(local.tm_year + 1900), std::chrono::month(unsigned(local.tm_mon + 1)),
            std::chrono::day(unsigned(local.tm_mday))};
}

} // namespace kelvaro
