// What the library keeps in the settings, under plain keys. Values that make no sense take their
// defaults.
#pragma once

#include "library/LibraryViews.h"
#include "platform/SettingsStore.h"

#include <optional>
#include <string_view>
#include <vector>

namespace kelvaro {

namespace settingKeys {
inline constexpr std::string_view folders = "folders";
inline constexpr std::string_view sortOrder = "sortOrder";
inline constexpr std::string_view thumbSize = "thumbSize";
inline constexpr std::string_view showsFilmstrip = "showsFilmstrip";
inline constexpr std::string_view appearance = "appearance";
} // namespace settingKeys

struct StoredLibrary {
    std::vector<FolderUrl> folders; // absolute, each once
    SortOrder sortOrder;
    std::optional<double> thumbSize; // points
    bool showsFilmstrip = true;
    AppearanceMode appearance = AppearanceMode::system;
};

StoredLibrary readLibrarySettings(const SettingsStore& settings);
void storeFolders(SettingsStore& settings, const std::vector<FolderUrl>& folders);
std::string_view rawValue(AppearanceMode mode); // "system"

} // namespace kelvaro
