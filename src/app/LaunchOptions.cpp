#include "app/LaunchOptions.h"

#include <cstdlib>

namespace kelvaro {

const std::string_view scriptRefusal =
    "[script] FAIL: this build has no script mode; use ./build.sh --scripting "
    "(build/Kelvaro-scripted)";

LaunchOptions launchOptions(const VariableReader& variable) {
    const auto isSet = [&](const char* name) { return variable(name) != nullptr; };
    return {.logsRenderTimes = isSet("KELVARO_PERF"),
            .logsThumbnailTimes = isSet("KELVARO_THUMBS"),
            .asksForScript = isSet("KELVARO_SCRIPT")};
}

LaunchOptions launchOptions() {
    return launchOptions([](const char* name) -> const char* { return std::getenv(name); });
}

} // namespace kelvaro
