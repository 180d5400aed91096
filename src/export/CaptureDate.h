// The calendar day on which a photo was taken, as its own clock said. Pure functions but for the
// time zone of the file's date; any thread.
#pragma once

#include "platform/FileSystem.h"
#include "platform/PhotoProperties.h"

#include <chrono>
#include <optional>
#include <string_view>

namespace kelvaro {

// "yyyy:MM:dd HH:mm:ss", nothing before or after; none for anything else or an impossible date.
std::optional<std::chrono::year_month_day> exifDay(std::string_view text);

// EXIF DateTimeOriginal, else DateTimeDigitized, else TIFF DateTime, else the day in local time on
// which the file was created.
std::chrono::year_month_day captureDay(const PhotoProperties& properties, FileTime created);

} // namespace kelvaro
