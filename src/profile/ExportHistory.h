// How many photos were exported on which day: numbers only, kept in the settings. Main thread.
#pragma once

#include "base/Published.h"
#include "platform/SettingsStore.h"

#include <cstdint>
#include <map>

namespace kelvaro {

class ExportHistory {
public:
    static constexpr std::string_view settingsKey = "exportHistory";

    // The store must outlive the history. Stored entries that make no sense are dropped.
    explicit ExportHistory(SettingsStore& settings);

    // Days since 1970-01-01 in the user's calendar; counts are 1 or more.
    const std::map<std::int64_t, std::int64_t>& byDay() const { return *byDay_; }
    [[nodiscard]] Subscription observe(Changes::Observer observer) const {
        return byDay_.observe(std::move(observer));
    }
    void add(std::int64_t day, std::int64_t photos);

private:
    SettingsStore& settings_;
    Published<std::map<std::int64_t, std::int64_t>> byDay_;
};

} // namespace kelvaro
