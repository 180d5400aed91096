// The keys of the settings store that belong to the program as a whole and to its window. The
// library and the export name theirs beside what they store.
#pragma once

#include <string_view>

namespace kelvaro::settingsKey {

inline constexpr std::string_view shareUsageCounts = "shareUsageCounts"; // flag, off unless set
inline constexpr std::string_view askedDriveAccess = "askedDriveAccess"; // flag
inline constexpr std::string_view migratedSettings = "migratedSettings"; // flag
inline constexpr std::string_view migratedFromLocalIdentifier = "migratedFromLocalIdentifier";
inline constexpr std::string_view profileName = "profileName";   // text
inline constexpr std::string_view profileIcon = "profileIcon";   // text, the name of an icon
inline constexpr std::string_view profileAsked = "profileAsked"; // flag, name and icon
inline constexpr std::string_view introductionSeen = "introductionSeen"; // flag
inline constexpr std::string_view windowGeometry = "windowGeometry";     // text, base 64
inline constexpr std::string_view showsSidebar = "showsSidebar";         // flag, on unless set
inline constexpr std::string_view foldedPanels = "foldedPanels"; // titles of the editor's panels

} // namespace kelvaro::settingsKey
