#include "app/Environment.h"

#include <cstdlib>

namespace kelvaro {
namespace {

// "/tmp/run7/" names "run7" like "/tmp/run7" does; ".", ".." and "/" name nothing.
std::string lastComponent(const std::filesystem::path& path) {
    const auto folder = path.has_filename() ? path : path.parent_path();
    const std::string name = folder.filename().string();
    return name.empty() || name == "." || name == ".." ? "default" : name;
}

} // namespace

const std::string_view scriptRefusal =
    "[script] FAIL: this build has no script mode; use ./build.sh --scripting "
    "(build/Kelvaro-scripted)";

std::string Environment::settingsDomain() const {
    return sandbox ? "app.kelvaro.mac.sandbox." + *sandbox : "settings";
}

Environment readEnvironment(const VariableReader& variable) {
    Environment found;
    found.logsRenderTimes = variable("KELVARO_PERF") != nullptr;
    found.logsThumbnailTimes = variable("KELVARO_THUMBS") != nullptr;
    found.asksForScript = variable("KELVARO_SCRIPT") != nullptr;
    if (const char* sandbox = variable("KELVARO_SANDBOX")) found.sandbox = lastComponent(sandbox);
    const char* folder = variable("KELVARO_TEST_FOLDER");
    if (found.sandbox && folder && *folder) found.testFolder = folder;
    return found;
}

Environment readEnvironment() {
    return readEnvironment([](const char* name) -> const char* { return std::getenv(name); });
}

} // namespace kelvaro
