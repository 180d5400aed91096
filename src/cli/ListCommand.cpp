#include "cli/Commands.h"
#include "cli/FolderTable.h"
#include "cli/PhotoJson.h"

#include <fmt/format.h>

#include <cmath>
#include <span>

namespace kelvaro {

namespace {

using Json = nlohmann::ordered_json;

Json toJson(const Photo& photo, const PhotoTable& table) {
    Json object{{"path", photo.url},
                {"name", photo.name},
                {"isRaw", photo.isRaw},
                {"fileSize", photo.fileSize},
                {"modified", isoTime(photo.modified)},
                {"created", isoTime(photo.created)},
                {"edited", table.isEdited(photo.url)},
                {"favorite", table.isFavorite(photo.url)}};
    if (const SharedMeta meta = table.meta(photo.url)) object["meta"] = kelvaro::toJson(*meta);
    return object;
}

// Calls back for each group, or once for all photos when there are no groups.
template<class Visit>
void forGroups(const LibraryView& view, bool hasGroups, Visit&& visit) {
    const std::span photos(view.photos);
    if (!hasGroups || view.groups.empty()) return visit("", photos);
    for (std::size_t i = 0; i < view.groups.size(); ++i) {
        const std::size_t begin = view.groups[i].start;
        const std::size_t end =
            i + 1 < view.groups.size() ? view.groups[i + 1].start : photos.size();
        visit(view.groups[i].title, photos.subspan(begin, end - begin));
    }
}

void printJson(const LibraryView& view, const PhotoTable& table, bool hasGroups) {
    Json document = Json::array();
    forGroups(view, hasGroups, [&](const std::string& title, auto photos) {
        Json list = Json::array();
        for (const Photo* photo : photos)
            list.push_back(toJson(*photo, table));
        if (!hasGroups)
            document = std::move(list);
        else
            document.push_back({{"title", title}, {"photos", std::move(list)}});
    });
    print(document);
}

void printText(const LibraryView& view, bool hasGroups) {
    forGroups(view, hasGroups, [&](const std::string& title, auto photos) {
        if (!title.empty()) fmt::print("{} ({})\n", title, photos.size());
        for (const Photo* photo : photos)
            fmt::print("{}{}\n", title.empty() ? "" : "  ", photo->url);
    });
}

EmptyReasons reasonsFor(PhotoTable& table, const LibraryQuery& request) {
    EmptyReasons reasons{.hasFolders = true};
    LibraryQuery all;
    all.scope = request.scope;
    const bool hasAny = !table.query(all).photos.empty();
    reasons.hasEdited = reasons.hasFavorites = hasAny;
    return reasons;
}

} // namespace

ExitCode runList(const ListRequest& request, Services& services) {
    FolderTable folders(services);
    const ExitCode code = folders.addAll(request.folders) ? ExitCode::done : ExitCode::someFailed;
    LibraryQuery view{.scope = {request.scope, {}}};
    view.searchText = request.query;
    view.filter = request.filter;
    view.order = request.order;
    view.now = {std::llround(services.clock->wallSeconds()) * 1'000'000'000};
    const LibraryView found = folders.table().query(view);
    if (request.json)
        printJson(found, folders.table(), request.groups);
    else
        printText(found, request.groups);
    if (found.photos.empty() && !request.json)
        fmt::print(stderr, "{}\n", emptyState(view, reasonsFor(folders.table(), view)).text);
    return code;
}

} // namespace kelvaro
