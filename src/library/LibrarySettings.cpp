#include "library/LibrarySettings.h"

#include "library/ByteText.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kelvaro {
namespace {

constexpr std::array modes{AppearanceMode::system, AppearanceMode::light, AppearanceMode::dark};

std::vector<FolderUrl> storedFolders(const SettingsStore& settings) {
    std::vector<FolderUrl> folders;
    const auto stored = settings.get<std::vector<std::string>>(settingKeys::folders);
    for (const std::string& text : stored.value_or(std::vector<std::string>())) {
        FolderUrl folder = bytesFromText(text);
        while (folder.size() > 1 && folder.ends_with('/'))
            folder.pop_back();
        const bool isNew = std::find(folders.begin(), folders.end(), folder) == folders.end();
        if (folder.starts_with('/') && isNew) folders.push_back(std::move(folder));
    }
    return folders;
}

} // namespace

std::string_view rawValue(AppearanceMode mode) {
    switch (mode) {
    case AppearanceMode::light:
        return "light";
    case AppearanceMode::dark:
        return "dark";
    case AppearanceMode::system:
        break;
    }
    return "system";
}

StoredLibrary readLibrarySettings(const SettingsStore& settings) {
    StoredLibrary stored{.folders = storedFolders(settings)};
    if (const auto text = settings.get<std::string>(settingKeys::sortOrder))
        stored.sortOrder = sortOrderFrom(*text);
    const auto size = settings.get<double>(settingKeys::thumbSize);
    if (size && std::isfinite(*size) && *size > 0) stored.thumbSize = size;
    stored.showsFilmstrip = settings.get<bool>(settingKeys::showsFilmstrip).value_or(true);
    const auto appearance = settings.get<std::string>(settingKeys::appearance).value_or("");
    for (const AppearanceMode mode : modes)
        if (rawValue(mode) == appearance) stored.appearance = mode;
    return stored;
}

void storeFolders(SettingsStore& settings, const std::vector<FolderUrl>& folders) {
    std::vector<std::string> list;
    for (const FolderUrl& folder : folders)
        list.push_back(textFromBytes(folder));
    settings.set(settingKeys::folders, std::move(list));
}

} // namespace kelvaro
