#include "cli/ExportProgress.h"

#include <cmath>
#include <cstdio>
#include <fmt/format.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

namespace kelvaro {

namespace {

std::string timeLeft(double seconds) {
    if (seconds < 60) return fmt::format("{:.0f} s left", std::ceil(seconds));
    if (seconds < 3600) return fmt::format("{:.0f} min left", std::ceil(seconds / 60));
    return fmt::format("{:.1f} h left", seconds / 3600);
}

} // namespace

std::string progressLine(const Exporter::State& state, double seconds) {
    std::string line = fmt::format("{} of {} photos", state.done, state.total);
    if (!state.failures.empty()) line += ", " + exportText::failed(state.failures.size());
    if (state.wasCancelled) return line + ", stopping";
    if (state.done == 0 || seconds <= 0) return line;
    const double perSecond = double(state.done) / seconds;
    line += fmt::format(", {:.0f} a minute, ", 60 * perSecond);
    return line + timeLeft(double(state.total - state.done) / perSecond);
}

std::string outcomeJson(const std::filesystem::path& photo, const Exporter::PhotoOutcome& outcome) {
    nlohmann::ordered_json object{{"photo", photo.string()}};
    if (outcome.file) {
        object["status"] = "exported";
        object["file"] = outcome.file->url.string();
        object["width"] = outcome.file->size.width;
        object["height"] = outcome.file->size.height;
        object["bytes"] = outcome.file->bytes;
    } else if (outcome.failure) {
        object["status"] = "failed";
        object["error"] = outcome.failure->message;
        if (!outcome.failure->detail.empty()) object["detail"] = outcome.failure->detail;
    } else {
        object["status"] = "stopped";
    }
    object["seconds"] = std::round(outcome.seconds * 1000) / 1000;
    // Names that are not UTF-8 are shown with replacement characters instead of ending the list.
    return object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

ProgressLine::ProgressLine() : isTerminal_(::isatty(STDERR_FILENO) == 1) {}

void ProgressLine::show(const std::string& text) {
    if (!isTerminal_) return;
    fmt::print(stderr, "\r{}\x1b[K", text);
    std::fflush(stderr);
    isShown_ = true;
}

void ProgressLine::clear() {
    if (!isShown_) return;
    fmt::print(stderr, "\r\x1b[K");
    std::fflush(stderr);
    isShown_ = false;
}

} // namespace kelvaro
