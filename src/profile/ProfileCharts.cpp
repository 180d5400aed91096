#include "profile/ProfileCharts.h"

#include "library/SettingTexts.h"
#include "platform/LocalCalendar.h"
#include "profile/FocalBands.h"
#include "profile/Shares.h"
#include "profile/WallTime.h"

#include <algorithm>
#include <fmt/format.h>

namespace kelvaro {
namespace {

constexpr std::size_t mostNames = 8;
constexpr std::string_view others = "Others";

constexpr std::array<std::string_view, 7> weekdays{"Monday", "Tuesday",  "Wednesday", "Thursday",
                                                   "Friday", "Saturday", "Sunday"};
constexpr std::array<std::string_view, 12> months{"January",   "February", "March",    "April",
                                                  "May",       "June",     "July",     "August",
                                                  "September", "October",  "November", "December"};
// Full stops; values go to the nearest, those beyond the ends to the ends.
constexpr std::array<double, 8> apertureStops{1.4, 2, 2.8, 4, 5.6, 8, 11, 16};
constexpr std::array<int, 8> isoStops{100, 200, 400, 800, 1600, 3200, 6400, 12'800};
struct ShutterStop {
    double seconds = 0;
    std::string_view label, tick;
};
constexpr std::array<ShutterStop, 8> shutterStops{{{1.0 / 4000, "1/4000 s or faster", "1/4000"},
                                                   {1.0 / 1000, "1/1000 s", "1/1000"},
                                                   {1.0 / 250, "1/250 s", "1/250"},
                                                   {1.0 / 60, "1/60 s", "1/60"},
                                                   {1.0 / 15, "1/15 s", "1/15"},
                                                   {1.0 / 4, "1/4 s", "1/4"},
                                                   {1, "1 s", "1 s"},
                                                   {4, "4 s or longer", "4 s"}}};

double centre(double stop) {
    return stop;
}
double centre(const ShutterStop& stop) {
    return stop.seconds;
}

// The stop that is nearest as a ratio: two neighbours meet at their geometric mean.
template<class Stops>
std::size_t nearestStop(double value, const Stops& stops) {
    std::size_t i = 0;
    while (i + 1 < stops.size() && value * value >= centre(stops[i]) * centre(stops[i + 1]))
        ++i;
    return i;
}

const std::optional<std::string>& nameIn(const ShotRecord& record, ChartKind kind) {
    return kind == ChartKind::camera ? record.camera : record.lens;
}

bool isOfNames(ChartKind kind) {
    return kind == ChartKind::camera || kind == ChartKind::lens;
}

std::string bandRange(const FocalBand& band) {
    if (band.widestMm == 0) return fmt::format("≤ {}", band.longestMm);
    if (&band == &FocalBands::all().back()) return fmt::format("≥ {}", band.widestMm);
    return fmt::format("{}–{}", band.widestMm, band.longestMm);
}

// The bars of a chart whose bars are always the same, without counts.
std::vector<ChartBar> fixedBars(ChartKind kind) {
    std::vector<ChartBar> bars;
    const auto add = [&](std::string label, std::string tick) {
        bars.push_back({std::move(label), std::move(tick), 0});
    };
    switch (kind) {
    case ChartKind::hour:
        for (int hour = 0; hour < 24; ++hour)
            add(fmt::format("{}:00", hour), std::to_string(hour));
        break;
    case ChartKind::weekday:
        for (const auto day : weekdays)
            add(std::string(day), std::string(day.substr(0, 3)));
        break;
    case ChartKind::month:
        for (const auto month : months)
            add(std::string(month), std::string(month.substr(0, 3)));
        break;
    case ChartKind::focalLength:
        for (const FocalBand& band : FocalBands::all()) {
            const std::string range = bandRange(band);
            add(range + " mm", range);
        }
        break;
    case ChartKind::aperture:
        for (const double stop : apertureStops)
            add(apertureText(stop), apertureText(stop));
        break;
    case ChartKind::shutter:
        for (const ShutterStop& stop : shutterStops)
            add(std::string(stop.label), std::string(stop.tick));
        break;
    case ChartKind::iso:
        for (const int stop : isoStops)
            add(isoText(stop), std::to_string(stop));
        break;
    case ChartKind::camera:
    case ChartKind::lens:
        break;
    }
    return bars;
}

} // namespace

Chart::Chart(ChartKind kind, std::span<const ShotRecord> records, const ShotSummary& summary)
    : kind_(kind) {
    if (isOfNames(kind)) {
        nameBars(kind == ChartKind::camera ? summary.cameras : summary.lenses);
        return;
    }
    bars_ = fixedBars(kind);
    for (const ShotRecord& record : records) {
        const auto bar = barOf(record);
        if (!bar) continue;
        ++bars_[*bar].count;
        ++recorded_;
    }
}

void Chart::nameBars(const std::vector<NamedCount>& names) {
    const std::size_t own = names.size() > mostNames ? mostNames - 1 : names.size();
    ChartBar rest{std::string(others), std::string(others), 0};
    for (std::size_t i = 0; i < names.size(); ++i) {
        recorded_ += names[i].count;
        if (i < own)
            bars_.push_back({names[i].name, names[i].name, names[i].count});
        else
            rest.count += names[i].count;
    }
    if (own < names.size()) bars_.push_back(std::move(rest));
}

std::string_view Chart::title() const {
    switch (kind_) {
    case ChartKind::hour:
        return "Hour of the day";
    case ChartKind::weekday:
        return "Day of the week";
    case ChartKind::month:
        return "Month";
    case ChartKind::focalLength:
        return "Focal length";
    case ChartKind::aperture:
        return "Aperture";
    case ChartKind::shutter:
        return "Shutter speed";
    case ChartKind::iso:
        return "ISO";
    case ChartKind::camera:
        return "Cameras";
    case ChartKind::lens:
        break;
    }
    return "Lenses";
}

std::optional<std::size_t> Chart::barOf(const ShotRecord& record) const {
    switch (kind_) {
    case ChartKind::hour:
        if (!record.taken) return std::nullopt;
        return hourOf(*record.taken);
    case ChartKind::weekday:
        if (!record.taken) return std::nullopt;
        return static_cast<std::size_t>(weekdayOf(dayOf(*record.taken)));
    case ChartKind::month:
        if (!record.taken) return std::nullopt;
        return static_cast<std::size_t>(civilFromSeconds(*record.taken).month - 1);
    case ChartKind::focalLength:
        if (!record.focal) return std::nullopt;
        return FocalBands::indexOf(*record.focal);
    case ChartKind::aperture:
        if (!record.aperture) return std::nullopt;
        return nearestStop(*record.aperture, apertureStops);
    case ChartKind::shutter:
        if (!record.shutter) return std::nullopt;
        return nearestStop(*record.shutter, shutterStops);
    case ChartKind::iso:
        if (!record.iso) return std::nullopt;
        return nearestStop(*record.iso, isoStops);
    case ChartKind::camera:
    case ChartKind::lens:
        break;
    }
    const auto& name = nameIn(record, kind_);
    if (!name) return std::nullopt;
    for (std::size_t i = 0; i < bars_.size(); ++i)
        if (bars_[i].label == *name) return i;
    return bars_.size() - 1; // the others
}

std::string Chart::description() const {
    if (recorded_ == 0) return fmt::format("{}: {}.", title(), kNotRecorded);
    const auto most =
        std::max_element(bars_.begin(), bars_.end(),
                         [](const ChartBar& a, const ChartBar& b) { return a.count < b.count; });
    return fmt::format("{}: most often {}, {} of {} photos.", title(), most->label,
                       Share{most->count, recorded_}.percentText(), recorded_);
}

} // namespace kelvaro
