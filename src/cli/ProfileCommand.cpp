#include "cli/Commands.h"
#include "cli/FolderTable.h"
#include "cli/PhotoJson.h"
#include "profile/Profile.h"

#include <fmt/format.h>

namespace kelvaro {

namespace {

using Json = nlohmann::ordered_json;

// Days of the request are inclusive.
DayRange daysOf(const ProfileRequest& request) {
    DayRange days{.first = request.from, .end = request.to};
    if (days.end) ++*days.end;
    return days;
}

Json chartsJson(const Profile& profile) {
    Json charts = Json::array();
    for (const Chart& chart : profile.charts) {
        Json bars = Json::array();
        for (const ChartBar& bar : chart.bars())
            bars.push_back({{"label", bar.label}, {"photos", bar.count}});
        charts.push_back(
            {{"title", chart.title()}, {"recorded", chart.recorded()}, {"bars", std::move(bars)}});
    }
    return charts;
}

void printJson(const Profile& profile) {
    const PeriodCounts& counts = profile.counts;
    Json document{{"counts",
                   {{"photos", counts.photos},
                    {"daysOut", counts.daysOut},
                    {"favorites", counts.favorites},
                    {"edits", counts.edits}}}};
    Json tags = Json::array();
    for (const StyleTag& tag : profile.tags)
        tags.push_back({{"title", tag.title}, {"reason", tag.reason}, {"strength", tag.strength}});
    document["tags"] = std::move(tags);
    if (profile.signature) document["signature"] = *profile.signature;
    document["sentences"] = sentencesOf(profile);
    document["charts"] = chartsJson(profile);
    print(document);
}

void printText(const Profile& profile) {
    const PeriodCounts& counts = profile.counts;
    fmt::print("{:>8}  photos\n{:>8}  days out\n{:>8}  favorites\n{:>8}  edits\n", counts.photos,
               counts.daysOut, counts.favorites, counts.edits);
    if (!profile.tags.empty()) fmt::print("\n");
    for (const StyleTag& tag : strongest(profile.tags, profile.tags.size()))
        fmt::print("{:.2f}  {:<28} {}\n", tag.strength, tag.title, tag.reason);
    const auto sentences = sentencesOf(profile);
    if (!sentences.empty()) fmt::print("\n");
    for (const std::string& sentence : sentences)
        fmt::print("{}\n", sentence);
}

} // namespace

ExitCode runProfile(const ProfileRequest& request, Services& services) {
    if (request.from && request.to && *request.from > *request.to) {
        report({FailureKind::malformed,
                "The day given with --to comes before the one given with --from."});
        return ExitCode::wrongUse;
    }
    FolderTable folders(services);
    const ExitCode code = folders.addAll(request.folders) ? ExitCode::done : ExitCode::someFailed;
    if (services.cancellation.isCancelled()) return ExitCode::stopped;
    const auto photos = folders.table().facts();
    const Profile profile =
        makeProfile(makeProfileSource(photos, *services.calendar, {}), daysOf(request));
    if (request.json)
        printJson(profile);
    else
        printText(profile);
    return code;
}

} // namespace kelvaro
