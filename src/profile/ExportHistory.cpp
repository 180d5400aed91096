#include "profile/ExportHistory.h"

#include <charconv>
#include <fmt/format.h>
#include <optional>

namespace kelvaro {
namespace {

std::optional<std::int64_t> wholeNumber(std::string_view text) {
    std::int64_t value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

} // namespace

ExportHistory::ExportHistory(SettingsStore& settings) : settings_(settings) {
    const auto stored = settings.get<std::vector<std::string>>(settingsKey);
    if (!stored) return;
    std::map<std::int64_t, std::int64_t> byDay;
    for (const std::string& entry : *stored) {
        const std::string_view text = entry;
        const auto blank = text.find(' ');
        if (blank == std::string_view::npos) continue;
        const auto day = wholeNumber(text.substr(0, blank));
        const auto photos = wholeNumber(text.substr(blank + 1));
        if (day && photos && *photos > 0) byDay[*day] = *photos;
    }
    byDay_.set(std::move(byDay));
}

void ExportHistory::add(std::int64_t day, std::int64_t photos) {
    if (photos <= 0) return;
    std::vector<std::string> entries;
    auto byDay = *byDay_;
    byDay[day] += photos;
    for (const auto& [on, count] : byDay)
        entries.push_back(fmt::format("{} {}", on, count));
    settings_.set(settingsKey, std::move(entries));
    byDay_.set(std::move(byDay));
}

} // namespace kelvaro
