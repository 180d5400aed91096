#include "platform/system/UserEnvironment.h"

#include "platform/system/JsonSettingsStore.h"

#include <cstdlib>
#include <fstream>
#include <pwd.h>
#include <unistd.h>

namespace kelvaro {
namespace {

namespace fs = std::filesystem;

constexpr const char* sandboxName = "KELVARO_SANDBOX";
constexpr const char* testFolderName = "KELVARO_TEST_FOLDER";
constexpr std::string_view foldersKey = "folders";

fs::path homeFolder(const Environment& environment) {
    if (const auto home = environment("HOME"); home && home->starts_with('/')) return *home;
    const passwd* user = ::getpwuid(::getuid());
    return user && user->pw_dir ? user->pw_dir : "/";
}

// Relative values are to be passed over, as the standard says.
fs::path baseFolder(const Environment& environment, const char* variable,
                    const fs::path& standard) {
    const auto value = environment(variable);
    return value && value->starts_with('/') ? fs::path(*value) : standard;
}

// The line XDG_PICTURES_DIR="$HOME/…" of the user's list of folders.
fs::path picturesFolder(const fs::path& config, const fs::path& home) {
    constexpr std::string_view key = "XDG_PICTURES_DIR=\"", homeMark = "$HOME/";
    std::ifstream list(config / "user-dirs.dirs");
    for (std::string line; std::getline(list, line);) {
        if (!line.starts_with(key) || line.size() <= key.size() || line.back() != '"') continue;
        const std::string value = line.substr(key.size(), line.size() - key.size() - 1);
        if (value.starts_with('/')) return value;
        if (value.starts_with(homeMark)) return home / value.substr(homeMark.size());
    }
    return home / "Pictures";
}

fs::path settingsFolder(const Environment& environment) {
    return baseFolder(environment, "XDG_CONFIG_HOME", homeFolder(environment) / ".config") /
           "Kelvaro";
}

std::string sandboxDomain(const std::string& sandbox) {
    const fs::path path(sandbox);
    const fs::path last = path.has_filename() ? path.filename() : path.parent_path().filename();
    const bool isName = !last.empty() && last != "." && last != "..";
    return "app.kelvaro.mac.sandbox." + (isName ? last.string() : std::string("default"));
}

} // namespace

Environment processEnvironment() {
    return [](const char* name) {
        const char* value = std::getenv(name);
        return value ? std::optional<std::string>(value) : std::nullopt;
    };
}

UserFolders userFolders(const Environment& environment) {
    const fs::path home = homeFolder(environment);
    const fs::path config = baseFolder(environment, "XDG_CONFIG_HOME", home / ".config");
    const fs::path data = baseFolder(environment, "XDG_DATA_HOME", home / ".local/share");
    const fs::path caches = baseFolder(environment, "XDG_CACHE_HOME", home / ".cache");
    UserFolders folders{.home = home,
                        .pictures = picturesFolder(config, home),
                        .settings = settingsFolder(environment),
                        .support = data / "Kelvaro",
                        .caches = caches / "Kelvaro"};
    if (environment(sandboxName)) {
        folders.support /= "TestSandbox";
        folders.caches /= "TestSandbox";
    }
    return folders;
}

std::unique_ptr<SettingsStore> openSettings(FileSystem& files, const Environment& environment) {
    const fs::path folder = settingsFolder(environment);
    const fs::path ownFile = folder / "settings.json";
    const auto sandbox = environment(sandboxName);
    if (!sandbox) return std::make_unique<JsonSettingsStore>(files, ownFile);
    const fs::path file = folder / (sandboxDomain(*sandbox) + ".json");
    static_cast<void>(files.remove(file)); // it begins empty
    auto settings = std::make_unique<JsonSettingsStore>(files, file);
    const std::string testFolder = environment(testFolderName).value_or("");
    if (!testFolder.empty()) {
        settings->set(foldersKey, std::vector<std::string>{testFolder});
    } else if (const auto own = JsonSettingsStore(files, ownFile).value(foldersKey)) {
        settings->set(foldersKey, *own);
    }
    return settings;
}

} // namespace kelvaro
