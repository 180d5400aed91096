#include "cli/Commands.h"
#include "cli/PhotoJson.h"

#include "base/Utf8.h"
#include "library/FolderScan.h"
#include "library/PhotoTable.h"

#include <fmt/format.h>

#include <cmath>
#include <thread>

namespace kelvaro {

namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

// The folders of one command line, read into a table.
class Listing {
public:
    explicit Listing(Services& services)
        : services_(services),
          metas_(*services.properties, nullptr, *services.calendar),
          table(*services.texts, *services.calendar) {}

    Result<void> add(const fs::path& folder);

private:
    void addMarks(const ScanResult& scan);

    Services& services_;
    MetaReader metas_;
    const std::atomic<std::uint64_t> noWrites_{0};

public:
    PhotoTable table;
    std::vector<std::string> problems; // one line each
};

Result<void> Listing::add(const fs::path& folder) {
    const auto resolved = services_.files->resolved(folder);
    if (!resolved) return fail(resolved.error());
    if (table.folder(resolved->string())) return {}; // named twice
    const FolderScan scanner(
        {*services_.files, *services_.random, *services_.texts, metas_, nullptr, noWrites_});
    const ScanResult scan = scanner.run({.folder = resolved->string(), .memory = nullptr});
    if (scan.isMissing)
        return fail(FailureKind::unreadable,
                    fmt::format("The folder “{}” can't be listed.", asUtf8(folder.string())));
    const FolderPhotos photos = scan.memory->photos;
    table.setFolder(photos);
    addMarks(scan);
    MetaReader::Plan plan;
    plan.threads = int(std::max(1u, std::thread::hardware_concurrency()));
    metas_.read(scan.folder, photos->photos(), plan, services_.cancellation,
                [this](const PhotoMetas& metas) { table.setMeta(metas); });
    if (services_.cancellation.isCancelled())
        return fail(FailureKind::cancelled, "The listing was interrupted.");
    return {};
}

void Listing::addMarks(const ScanResult& scan) {
    const auto url = [&](const std::string& name) { return scan.folder + "/" + name; };
    for (const auto& [name, edit] : scan.edits) {
        const double seconds = edit->editedAt;
        table.setEdit(url(name), true,
                      seconds == 0 ? std::nullopt
                                   : std::optional(FileTime{std::llround(seconds * 1e9)}));
    }
    for (const std::string& name : scan.favorites)
        table.setFavorite(url(name), true);
    problems.insert(problems.end(), scan.problems.begin(), scan.problems.end());
}

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

EmptyReasons reasonsFor(PhotoTable& table, const ViewRequest& request) {
    EmptyReasons reasons{.hasFolders = true};
    ViewRequest all;
    all.scope = request.scope;
    const bool hasAny = !table.query(all).photos.empty();
    reasons.hasEdited = reasons.hasFavorites = hasAny;
    return reasons;
}

} // namespace

ExitCode runList(const ListRequest& request, Services& services) {
    ExitCode code = ExitCode::done;
    Listing listing(services);
    for (const fs::path& folder : request.folders) {
        const auto added = listing.add(folder);
        if (added) continue;
        report(added.error());
        code = ExitCode::someFailed;
    }
    for (const std::string& problem : listing.problems) {
        report({FailureKind::unreadable, problem});
        code = ExitCode::someFailed;
    }
    ViewRequest view{.scope = {request.scope, {}}};
    view.searchText = request.query;
    view.filter = request.filter;
    view.order = request.order;
    view.now = {std::llround(services.clock->wallSeconds()) * 1'000'000'000};
    const LibraryView found = listing.table.query(view);
    if (request.json)
        printJson(found, listing.table, request.groups);
    else
        printText(found, request.groups);
    if (found.photos.empty() && !request.json)
        fmt::print(stderr, "{}\n", emptyState(view, reasonsFor(listing.table, view)).text);
    return code;
}

} // namespace kelvaro
