// What the export says to people, once. Pure functions, any thread.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kelvaro {

enum class ExportError { unreadable, renderFailed, writeFailed };
std::string_view description(ExportError error);

namespace exportText {

inline constexpr std::string_view colourSpaceHelp =
    "sRGB: safest for the web and other apps. Display P3: the wider colours this screen shows.";
inline constexpr std::string_view borderHelp =
    "A white margin around the photo, the same width on all four sides, like a print";
inline constexpr std::string_view borderUnit = "Of the photo's long edge";
inline constexpr std::string_view dateStampHelp =
    "Imprint the day each photo was taken in its bottom-right corner, in gold like a film camera's "
    "timestamp";
inline constexpr std::string_view metadataLabel = "Include camera info and location";
inline constexpr std::string_view replaceHelp =
    "A file with the same name is already in the folder: keep both (the new one is numbered) or "
    "replace it. Photos in your library are never replaced.";
inline constexpr std::string_view showFolder = "Show in Finder";

std::string cannotCreate(const std::string& folderName, const std::string& reason);
// "1 photo exported", "12 photos exported".
std::string exported(std::size_t count);
// "2 failed"; empty for none.
std::string failed(std::size_t count);
// "Stopped after 3 of 10 photos".
std::string stopped(std::size_t count, std::size_t total);

} // namespace exportText

} // namespace kelvaro
