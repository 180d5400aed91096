#include "profile/StyleTag.h"

#include "library/SettingTexts.h"
#include "profile/Shares.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <string_view>

namespace kelvaro {
namespace {

constexpr std::int64_t fewestRecords = 10; // for any tag, and that carry a family's value
constexpr std::int64_t fewestForBursts = 20;
constexpr std::int64_t fewestForCurator = 100;
constexpr std::size_t mostLensesOfOneLens = 3; // beside the one, a borrowed lens or two
constexpr double fullStrengthStops = 3;        // past a threshold of a typical setting

// A share of at least `threshold` percent: 0 at the threshold, 1 at the whole.
double strengthAbove(const Share& share, int threshold) {
    const double limit = threshold / 100.0;
    return (share.fraction() - limit) / (1 - limit);
}

// A share of at most `threshold` percent: 0 at the threshold, 1 at nothing.
double strengthBelow(const Share& share, int threshold) {
    const double limit = threshold / 100.0;
    return (limit - share.fraction()) / limit;
}

// A value some factors of two beyond its threshold, either way.
double strengthInStops(double value, double threshold) {
    return std::min(1.0, std::abs(std::log2(value / threshold)) / fullStrengthStops);
}

// Light halves with each step of the square root of two in the f-number.
double strengthInApertureStops(double aperture, double threshold) {
    return std::min(1.0, 2 * std::abs(std::log2(aperture / threshold)) / fullStrengthStops);
}

class TagRules {
public:
    TagRules(const ShotSummary& summary, std::int64_t edits) : shots_(summary), edits_(edits) {}

    std::vector<StyleTag> evaluate() {
        if (shots_.records < fewestRecords) return {};
        focalLengths();
        lenses();
        cameras();
        apertures();
        shutters();
        isos();
        hours();
        days();
        curation();
        files();
        return std::move(tags_);
    }

private:
    static bool isCarried(std::int64_t count) { return count >= fewestRecords; }

    void add(std::string_view title, std::string reason, double strength) {
        tags_.push_back({std::string(title), std::move(reason), strength});
    }
    // The usual form: a share of at least so many percent, told as a percentage.
    void addShare(std::string_view title, const Share& share, int threshold,
                  std::string_view afterPercentage) {
        if (!share.isAtLeast(threshold)) return;
        add(title, share.percentText() + std::string(afterPercentage),
            strengthAbove(share, threshold));
    }

    void focalLengths();
    void lenses();
    void cameras();
    void apertures();
    void shutters();
    void isos();
    void hours();
    void days();
    void curation();
    void files();

    const ShotSummary& shots_;
    const std::int64_t edits_;
    std::vector<StyleTag> tags_;
};

void TagRules::focalLengths() {
    if (!isCarried(shots_.withFocal)) return;
    const auto& counts = shots_.byFocalBand;
    // Of equal bands the earlier one.
    const auto most = std::max_element(counts.begin(), counts.end());
    const FocalBand& band = FocalBands::all()[static_cast<std::size_t>(most - counts.begin())];
    addShare(band.title, {*most, shots_.withFocal}, 45,
             fmt::format(" of your photos {}.", band.phrase));
    addShare("Wildlife reach", {shots_.farReach, shots_.withFocal}, 15,
             " of your photos at 300 mm or longer.");
}

void TagRules::lenses() {
    if (!isCarried(shots_.withLens)) return;
    const Share zooms{shots_.zooms, shots_.withLens};
    const Share primes{shots_.withLens - shots_.zooms, shots_.withLens};
    addShare("Prime lover", primes, 60, " of your photos with fixed-focal-length lenses.");
    addShare("Zoom wanderer", zooms, 70, " of your photos with zoom lenses.");
    if (shots_.lenses.size() > mostLensesOfOneLens) return;
    const NamedCount& first = shots_.lenses.front();
    addShare("One-lens wonder", {first.count, shots_.withLens}, 85,
             " of your photos with your " + first.name);
}

void TagRules::cameras() {
    if (!isCarried(shots_.withCamera)) return;
    const Share phones{shots_.phones, shots_.withCamera};
    if (phones.isAtLeast(10) && phones.isAtMost(60)) {
        const double middle = 0.35, halfWidth = 0.25;
        add("Phone in the pocket too",
            phones.percentText() + " of your photos from a phone, the rest from a camera.",
            1 - std::abs(phones.fraction() - middle) / halfWidth);
    }
    const auto sharing =
        std::count_if(shots_.cameras.begin(), shots_.cameras.end(), [&](const NamedCount& camera) {
            return Share{camera.count, shots_.withCamera}.isAtLeast(10);
        });
    // Ten cameras can share the work at most.
    if (sharing >= 3) {
        add("Multi-camera shooter",
            fmt::format("{} cameras each took at least 10% of your photos.", sharing),
            static_cast<double>(sharing - 3) / 7);
    }
}

void TagRules::apertures() {
    if (!isCarried(shots_.withAperture)) return;
    const double aperture = *shots_.typicalAperture;
    const std::string text = apertureText(aperture);
    if (aperture <= 1.8) {
        add("Wide-open dreamer",
            fmt::format("Usually at {} or wider: soft backgrounds, thin focus.", text),
            strengthInApertureStops(aperture, 1.8));
    } else if (aperture <= 2.8) {
        add("Bokeh fan",
            fmt::format("A typical aperture of {}: subjects lifted off soft backgrounds.", text),
            strengthInApertureStops(aperture, 2.8));
    }
    if (aperture >= 8) {
        add("Everything in focus",
            fmt::format("A typical aperture of {}: sharp from front to back.", text),
            strengthInApertureStops(aperture, 8));
    }
}

void TagRules::shutters() {
    if (!isCarried(shots_.withShutter)) return;
    addShare("Motion freezer", {shots_.fast, shots_.withShutter}, 40,
             " of your photos at 1/1000 s or faster.");
    const Share slow{shots_.slow, shots_.withShutter};
    if (slow.isAtLeast(5)) {
        add("Long-exposure artist",
            fmt::format("{} photos exposed for a second or longer.", slow.part),
            strengthAbove(slow, 5));
    }
}

void TagRules::isos() {
    if (!isCarried(shots_.withIso)) return;
    const int iso = *shots_.typicalIso;
    if (iso >= 1600) {
        add("Low-light hero",
            fmt::format("A typical ISO of {}: you keep shooting when the light goes.", iso),
            strengthInStops(iso, 1600));
    }
    if (iso <= 200) {
        add("Daylight shooter", fmt::format("A typical ISO of {}: good light, clean files.", iso),
            strengthInStops(iso, 200));
    }
    addShare("ISO-fearless", {shots_.highIso, shots_.withIso}, 10,
             " of your photos at ISO 6400 or higher.");
}

void TagRules::hours() {
    if (!isCarried(shots_.withTime)) return;
    // From the first hour up to, not including, the last; past midnight where the last is smaller.
    const auto between = [&](std::size_t first, std::size_t last) {
        Share share{0, shots_.withTime};
        for (std::size_t hour = first; hour != last; hour = (hour + 1) % 24)
            share.part += shots_.byHour[hour];
        return share;
    };
    addShare("Early bird", between(5, 9), 30,
             " of your photos between 5:00 and 9:00, in the morning's soft light.");
    addShare("Lunch-break shooter", between(12, 14), 30,
             " of your photos between 12:00 and 14:00.");
    addShare("Golden-hour chaser", between(17, 21), 35,
             " of your photos between 17:00 and 21:00, when the light turns warm.");
    addShare("Night owl", between(21, 5), 25, " of your photos after 21:00 or before 5:00.");
}

void TagRules::days() {
    const std::int64_t days = shots_.shootingDays(), timed = shots_.withTime;
    if (isCarried(timed)) {
        addShare("Weekend shooter", {shots_.byWeekday[5] + shots_.byWeekday[6], timed}, 60,
                 " of your photos on Saturdays and Sundays.");
    }
    if (timed >= fewestForBursts) {
        addShare("Burst shooter", {shots_.closeFollowers, timed}, 30,
                 " of your frames came within two seconds of the one before.");
    }
    if (days >= 5 && timed <= 6 * days) {
        add("Deliberate shooter",
            fmt::format("About {} carefully chosen frames per day out shooting.",
                        roundedQuotient(timed, days)),
            1 - static_cast<double>(timed) / static_cast<double>(6 * days));
    }
    const std::int64_t busiest = shots_.busiestDay();
    if (busiest >= 200) {
        add("Big-day shooter", fmt::format("{} photos in a single day.", busiest),
            strengthInStops(static_cast<double>(busiest), 200));
    }
}

void TagRules::curation() {
    const Share hearts{shots_.favorites, shots_.records};
    if (hearts.isAtLeast(30)) {
        add("Generous with hearts",
            fmt::format("You've favourited {} of these photos.", hearts.percentText()),
            strengthAbove(hearts, 30));
    }
    if (hearts.part > 0 && hearts.isAtMost(5) && shots_.records >= fewestForCurator) {
        add("Tough curator",
            fmt::format("Only {} of these photos made your favourites.", hearts.percentText()),
            strengthBelow(hearts, 5));
    }
    const Share edited{edits_, shots_.records};
    if (edited.isAtLeast(50)) {
        add("Thoughtful editor",
            fmt::format("{} edits for {} photos taken.", edits_, shots_.records),
            std::min(1.0, strengthAbove(edited, 50)));
    }
}

void TagRules::files() {
    const Share raw{shots_.raw, shots_.records};
    addShare("RAW purist", raw, 90, " of your photos are RAW files.");
    if (raw.isAtMost(10)) {
        const Share others{shots_.records - shots_.raw, shots_.records};
        add("Straight-out-of-camera", others.percentText() + " of your photos are JPEG or HEIC.",
            strengthBelow(raw, 10));
    }
}

} // namespace

std::vector<StyleTag> styleTags(const ShotSummary& summary, std::int64_t edits) {
    return TagRules(summary, edits).evaluate();
}

std::vector<StyleTag> strongest(std::vector<StyleTag> tags, std::size_t most) {
    std::stable_sort(tags.begin(), tags.end(),
                     [](const StyleTag& a, const StyleTag& b) { return a.strength > b.strength; });
    if (tags.size() > most) tags.resize(most);
    return tags;
}

} // namespace kelvaro
