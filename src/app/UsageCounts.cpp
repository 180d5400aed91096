#include "app/UsageCounts.h"

#include <cmath>
#include <fmt/format.h>

namespace kelvaro {
namespace {

constexpr std::string_view sharedKey = "shareUsageCounts";
constexpr std::string_view launchesKey = "usageLaunches";
constexpr std::string_view exportsKey = "usageExportedPhotos";
constexpr double largestCount = 1e15; // what a double still counts one by one

} // namespace

UsageCounts::UsageCounts(SettingsStore& settings, UsageSender& sender, std::string programVersion,
                         std::string systemVersion)
    : settings_(settings),
      sender_(sender),
      programVersion_(std::move(programVersion)),
      systemVersion_(std::move(systemVersion)) {}

bool UsageCounts::isShared() const {
    return settings_.get<bool>(sharedKey).value_or(false);
}

void UsageCounts::setShared(bool shared) {
    settings_.set(sharedKey, shared);
    if (shared) return;
    settings_.remove(launchesKey);
    settings_.remove(exportsKey);
}

std::int64_t UsageCounts::stored(std::string_view key) const {
    const double value = settings_.get<double>(key).value_or(0);
    return value > 0 && value <= largestCount ? static_cast<std::int64_t>(value) : 0;
}

void UsageCounts::add(std::string_view key, std::int64_t count) {
    if (!isShared() || count <= 0) return;
    settings_.set(key, static_cast<double>(stored(key) + count));
}

void UsageCounts::countLaunch() {
    add(launchesKey, 1);
}

void UsageCounts::countExport(std::int64_t photos) {
    add(exportsKey, photos);
}

std::int64_t UsageCounts::launches() const {
    return stored(launchesKey);
}

std::int64_t UsageCounts::exportedPhotos() const {
    return stored(exportsKey);
}

std::string UsageCounts::message() const {
    return fmt::format("Kelvaro.launched: {}\nKelvaro.exported: {}\nKelvaro: {}\nSystem: {}\n",
                       launches(), exportedPhotos(), programVersion_, systemVersion_);
}

void UsageCounts::sendPending() {
    const bool isNothing = launches() == 0 && exportedPhotos() == 0;
    if (!isShared() || isNothing || !sender_.hasAddress() || !sender_.send(message())) return;
    settings_.remove(launchesKey);
    settings_.remove(exportsKey);
}

} // namespace kelvaro
