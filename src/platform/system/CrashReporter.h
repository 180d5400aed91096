// Writes a report when the program ends by a fault: what happened, which version, and where in the
// program. Reports stay on this machine until the user sends one. Once at start, on the main
// thread.
#pragma once

#include <filesystem>
#include <string>

namespace kelvaro {

// From now on a fault leaves "Kelvaro-YYYYMMDD-HHMMSS-PID.txt" in `folder`, which is made when it
// is missing, and then ends the program as it would have ended. `heading` begins each report.
void reportCrashesTo(const std::filesystem::path& folder, const std::string& heading);

} // namespace kelvaro
