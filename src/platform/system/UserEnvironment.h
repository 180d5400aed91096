// Where this user's files stand on a freedesktop system, and the sandbox of automated runs, both as
// the environment says.
#pragma once

#include "platform/FileSystem.h"
#include "platform/SettingsStore.h"
#include "platform/UserFolders.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace kelvaro {

// The value of an environment variable; none where it is not set.
using Environment = std::function<std::optional<std::string>(const char* name)>;
Environment processEnvironment();

// With KELVARO_SANDBOX, support and caches are separate folders.
UserFolders userFolders(const Environment& environment);

// The user's settings. With KELVARO_SANDBOX a separate domain that begins empty, but for "folders":
// the one that KELVARO_TEST_FOLDER names, else those of the user's own settings, which are only
// read.
std::unique_ptr<SettingsStore> openSettings(FileSystem& files, const Environment& environment);

} // namespace kelvaro
