#include "cli/Commands.h"
#include "cli/PhotoJson.h"

#include "base/Utf8.h"
#include "library/PhotoInfo.h"
#include "platform/PhotoKinds.h"

#include <fmt/format.h>

#include <algorithm>

namespace kelvaro {

namespace {

namespace fs = std::filesystem;

struct Panel {
    PhotoInfo info;
    std::vector<InfoRow> rows;
};

Result<Panel> panelOf(const fs::path& path, Services& services) {
    const auto kind = photoKind(path);
    if (!kind)
        return fail(FailureKind::unsupported, fmt::format("“{}” isn't a photo that Kelvaro knows.",
                                                          path.filename().string()));
    const auto status = services.files->status(path);
    if (!status) return fail(status.error());
    const fs::path whole = fs::absolute(path).lexically_normal();
    const Photo photo = makePhoto(whole.parent_path().string(), whole.filename().string(), *kind,
                                  status->size, status->modified, status->created);
    auto info = readPhotoInfo(*services.properties, photo);
    if (!info) return fail(info.error());
    auto rows = infoRows(*info, *services.texts, *services.calendar);
    return Panel{std::move(*info), std::move(rows)};
}

// Characters as a terminal counts them, near enough for our own labels.
std::size_t columns(std::string_view text) {
    return std::size_t(
        std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

void printPanel(const fs::path& photo, const std::vector<InfoRow>& rows) {
    fmt::print("{}\n", photo.string());
    if (rows.empty()) fmt::print("  {}\n", texts::noInformation);
    std::size_t width = 0;
    for (const InfoRow& row : rows)
        width = std::max(width, columns(row.label));
    std::string_view section;
    for (const InfoRow& row : rows) {
        if (row.section != section) fmt::print("  {}\n", row.section);
        section = row.section;
        fmt::print("    {}{:{}}  {}\n", row.label, "", width - columns(row.label),
                   asUtf8(row.text));
    }
}

nlohmann::ordered_json toJson(const fs::path& photo, const Panel& panel) {
    nlohmann::ordered_json object{{"path", photo.string()}};
    object.update(kelvaro::toJson(panel.info));
    auto rows = nlohmann::ordered_json::array();
    for (const InfoRow& row : panel.rows)
        rows.push_back(
            {{"key", row.key}, {"section", row.section}, {"label", row.label}, {"text", row.text}});
    object["panel"] = std::move(rows);
    return object;
}

} // namespace

ExitCode runInfo(const PanelRequest& request, Services& services) {
    ExitCode code = ExitCode::done;
    auto list = nlohmann::ordered_json::array();
    for (const fs::path& photo : request.photos) {
        const auto panel = panelOf(photo, services);
        if (!panel) {
            report(panel.error());
            code = ExitCode::someFailed;
        } else if (request.json) {
            list.push_back(toJson(photo, *panel));
        } else {
            printPanel(photo, panel->rows);
        }
    }
    if (request.json) print(list);
    return code;
}

} // namespace kelvaro
