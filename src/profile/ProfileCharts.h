// The charts of the profile: into which bar a record falls, and how many fall into each. A bar's
// photos are found again with the same question, so that a click can show them.
#pragma once

#include "profile/ShotSummary.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelvaro {

enum class ChartKind { hour, weekday, month, focalLength, aperture, shutter, iso, camera, lens };
inline constexpr std::array kChartKinds{
    ChartKind::hour,        ChartKind::weekday,  ChartKind::month,
    ChartKind::focalLength, ChartKind::aperture, ChartKind::shutter,
    ChartKind::iso,         ChartKind::camera,   ChartKind::lens};

struct ChartBar {
    std::string label; // "1/250 s"
    std::string tick;  // as short as an axis needs it: "1/250"
    std::int64_t count = 0;
    bool operator==(const ChartBar&) const = default;
};

class Chart {
public:
    // `summary` is that of the records. Of cameras and lenses the most used have bars of their
    // own, the rest shares one called "Others".
    Chart(ChartKind kind, std::span<const ShotRecord> records, const ShotSummary& summary);

    ChartKind kind() const { return kind_; }
    std::string_view title() const; // "Hour of the day"
    const std::vector<ChartBar>& bars() const { return bars_; }
    // The records that carry the value; 0 means that nothing is recorded.
    std::int64_t recorded() const { return recorded_; }
    // The bar that holds the record; none when it does not carry the value.
    std::optional<std::size_t> barOf(const ShotRecord& record) const;
    // The chart in one sentence, for people who cannot see it.
    std::string description() const;

private:
    void nameBars(const std::vector<NamedCount>& names);

    ChartKind kind_;
    std::vector<ChartBar> bars_;
    std::int64_t recorded_ = 0;
};

// Shown in place of a chart that has nothing to show.
inline constexpr std::string_view kNotRecorded = "Not recorded in these photos";

} // namespace kelvaro
