// What the environment variables ask of a program with a window, read once at start. Where its
// settings and files stand is the platform's to read (UserEnvironment).
#pragma once

#include <functional>
#include <string_view>

namespace kelvaro {

struct LaunchOptions {
    bool logsRenderTimes = false;    // KELVARO_PERF
    bool logsThumbnailTimes = false; // KELVARO_THUMBS
    bool asksForScript = false;      // KELVARO_SCRIPT

    bool operator==(const LaunchOptions&) const = default;
};

// Null for a variable that is not set. A variable that is set to nothing counts as set.
using VariableReader = std::function<const char*(const char* name)>;
LaunchOptions launchOptions(const VariableReader& variable);
LaunchOptions launchOptions(); // of this process

// What a program without a script mode prints, and the status it ends with.
extern const std::string_view scriptRefusal;
inline constexpr int scriptRefusalStatus = 2;

} // namespace kelvaro
