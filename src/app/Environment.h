// What the environment variables ask for, read once at start.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

namespace kelvaro {

struct Environment {
    bool logsRenderTimes = false;    // KELVARO_PERF
    bool logsThumbnailTimes = false; // KELVARO_THUMBS
    bool asksForScript = false;      // KELVARO_SCRIPT
    // KELVARO_SANDBOX: the sandbox folder's last path component, "default" when it names none.
    std::optional<std::string> sandbox;
    // KELVARO_TEST_FOLDER; only ever set together with a sandbox.
    std::optional<std::filesystem::path> testFolder;

    // The settings file's name without extension: the sandbox has one of its own.
    std::string settingsDomain() const;

    bool operator==(const Environment&) const = default;
};

// Null for a variable that is not set.
using VariableReader = std::function<const char*(const char* name)>;
Environment readEnvironment(const VariableReader& variable);
Environment readEnvironment(); // of this process

// What a program without a script mode prints, and the status it ends with.
extern const std::string_view scriptRefusal;
inline constexpr int scriptRefusalStatus = 2;

} // namespace kelvaro
