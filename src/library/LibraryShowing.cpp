// What the grid shows: questions to the view queue and their answers.
#include "library/LibraryParts.h"

#include "library/LibrarySettings.h"

#include <algorithm>
#include <chrono>

namespace kelvaro {

FileTime LibraryStore::Parts::now() const {
    return timeFromSeconds(services.clock.wallSeconds());
}

LibraryQuery LibraryStore::Parts::query() const {
    LibraryQuery request{.scope = *scope,
                         .searchText = *searchText,
                         .filter = *filter,
                         .order = *sortOrder,
                         .monthGroups = *thumbSize < monthGroupsBelow,
                         .now = now(),
                         .unavailable = {},
                         .only = *restriction};
    request.unavailable.insert(missingFolders->begin(), missingFolders->end());
    return request;
}

void LibraryStore::Parts::show() {
    viewQuestion = views.show(query(), *selection);
}

// "Today" becomes "Yesterday". Looks now and then besides, because a clock may be set and a machine
// may sleep over midnight.
void LibraryStore::Parts::watchDay() {
    constexpr int longestPause = 600, secondsPerDay = 86400;
    const CivilTime time = services.calendar.civil(now());
    const std::int64_t today = dayNumber(time);
    if (shownDay && *shownDay != today) show();
    shownDay = today;
    const int untilMidnight = secondsPerDay - (time.hour * 60 + time.minute) * 60 - time.second;
    views.postLater(std::chrono::seconds(std::min(untilMidnight + 1, longestPause)),
                    [this] { poster.post([this] { watchDay(); }); });
}

// The one before may be large.
void LibraryStore::Parts::select(PhotoSet photos) {
    const PhotoSet old = *selection;
    selection.set(std::move(photos));
    views.dispose(old);
}

void LibraryStore::Parts::takeView(ViewAnswer answer) {
    const auto old = *view;
    if (answer.kept && answer.question == viewQuestion) select(std::move(*answer.kept));
    if (answer.options) filterOptions.update(std::move(*answer.options));
    view.set(std::move(answer.view));
    views.dispose(old);
}

// Single marks that differ from what the table has.
void LibraryStore::Parts::showMarks(const FolderUrl& folder, const MergeEffects& effects) {
    if (effects.editNames.empty() && effects.favoriteNames.empty()) return;
    struct Mark {
        PhotoUrl photo;
        SharedEdit edit;
        bool isFavorite = false;
    };
    const FolderState& state = *states.find(folder);
    std::vector<Mark> marks;
    const auto add = [&](const std::string& name) {
        const auto at = state.photos ? state.photos->find(name) : std::nullopt;
        if (!at) return;
        const auto edit = state.edits.find(name);
        marks.push_back({state.photos->photos()[*at].url,
                         edit == state.edits.end() ? nullptr : edit->second,
                         state.favorites.contains(name)});
    };
    std::for_each(effects.editNames.begin(), effects.editNames.end(), add);
    std::for_each(effects.favoriteNames.begin(), effects.favoriteNames.end(), add);
    views.change(ViewQueue::Source::user, [marks = std::move(marks)](PhotoTable& table) {
        for (const Mark& mark : marks) {
            table.setEdit(mark.photo, mark.edit != nullptr,
                          mark.edit ? editDateOf(*mark.edit) : std::nullopt);
            table.setFavorite(mark.photo, mark.isFavorite);
        }
    });
}

std::optional<std::size_t> LibraryStore::Parts::positionOf(const PhotoUrl& photo) const {
    const auto& photos = (*view)->photos;
    if (positionHint < photos.size() && photos[positionHint]->url == photo) return positionHint;
    const auto found = (*view)->positionOf(photo);
    if (found) positionHint = *found;
    return found;
}

std::optional<EmptyState> LibraryStore::emptyState() const {
    const Parts& p = *parts_;
    const bool isFolder = p.scope->kind == Scope::Kind::folder;
    const bool isUnavailable = isFolder && p.missingFolders->contains(p.scope->folder);
    const bool isReading =
        isFolder ? p.indexingFolders->contains(p.scope->folder) : !p.indexingFolders->empty();
    if (!p.view.get()->photos.empty() || (isReading && !isUnavailable)) return std::nullopt;
    return kelvaro::emptyState(p.query(), {.hasFolders = !p.folders->empty(),
                                           .isFolderUnavailable = isUnavailable,
                                           .hasFavorites = favoriteCount() > 0,
                                           .hasEdited = editedCount() > 0});
}

void LibraryStore::setScope(Scope scope) {
    if (scope.kind == Scope::Kind::folder) parts_->scans.prefer(scope.folder);
    const bool leaves = parts_->restriction.update(nullptr);
    if (parts_->scope.update(std::move(scope)) || leaves) parts_->show();
}

void LibraryStore::showOnly(SharedRestriction restriction) {
    Parts& p = *parts_;
    p.scope.update({});
    p.searchText.update({});
    p.filter.update({});
    p.restriction.set(std::move(restriction));
    p.show();
}

void LibraryStore::leaveRestriction() {
    if (parts_->restriction.update(nullptr)) parts_->show();
}

void LibraryStore::setFilter(PhotoFilter filter) {
    if (parts_->filter.update(std::move(filter))) parts_->show();
}

void LibraryStore::setSearchText(std::string text) {
    if (parts_->searchText.update(std::move(text))) parts_->show();
}

void LibraryStore::setSearchFocus(bool wanted) {
    parts_->searchFocus.update(wanted);
}

void LibraryStore::setSortOrder(SortOrder order) {
    if (!parts_->sortOrder.update(order)) return;
    parts_->services.settings.set(settingKeys::sortOrder, storedText(order));
    parts_->show();
}

void LibraryStore::setThumbSize(double points) {
    const bool hadMonths = *parts_->thumbSize < Parts::monthGroupsBelow;
    if (!(points > 0) || !parts_->thumbSize.update(points)) return;
    parts_->services.settings.set(settingKeys::thumbSize, points);
    if (hadMonths != (points < Parts::monthGroupsBelow)) parts_->show();
}

// --- Selection, navigation, requests ---

void LibraryStore::setSelection(PhotoSet selection) {
    Parts& p = *parts_;
    if (*p.selection == selection) return;
    p.select(std::move(selection));
    if (!p.services.sessions) return;
    const auto first = targets();
    const Photo* photo = first.empty() ? nullptr : this->photo(first.front());
    if (photo)
        p.services.sessions->prewarm(*photo, p.editOf(photo->url));
    else
        p.services.sessions->cancelPrewarm();
}

void LibraryStore::selectAll() {
    const auto& photos = parts_->view.get()->photos;
    PhotoSet::Urls all;
    all.reserve(photos.size());
    for (const Photo* photo : photos)
        all.insert(photo->url);
    setSelection(PhotoSet(std::move(all)));
}

void LibraryStore::setScrollTarget(std::optional<PhotoUrl> target) {
    parts_->scrollTarget.set(std::move(target));
}

void LibraryStore::requestInfo(std::optional<PhotoUrl> photo) {
    Parts& p = *parts_;
    p.info.update(std::nullopt);
    if (!photo) {
        p.infoRequest.update(std::nullopt);
        return;
    }
    const InfoRequest request{*photo, ++p.infoToken};
    p.infoRequest.set(request);
    const Photo* found = this->photo(*photo);
    if (!found) {
        p.info.set(PhotoInfo{});
        return;
    }
    ++p.running;
    p.infoQueue.post([&p, photo = *found, request] {
        auto read = readPhotoInfo(p.services.properties, photo);
        p.poster.post([&p, request, info = read ? std::move(*read) : PhotoInfo{}] {
            --p.running;
            if (p.infoRequest.get() == request) p.info.set(info);
        });
    });
}

void LibraryStore::requestExport() {
    auto photos = targets();
    if (!photos.empty())
        parts_->exportRequest.set(ExportRequest{std::move(photos), ++parts_->exportToken});
}

void LibraryStore::endExportRequest() {
    parts_->exportRequest.update(std::nullopt);
}

std::vector<PhotoUrl> LibraryStore::targets() const {
    const Parts& p = *parts_;
    if (p.openPhoto.get()) return {**p.openPhoto};
    const PhotoSet& selection = *p.selection;
    if (selection.size() == 1) return {*selection.begin()};
    std::vector<PhotoUrl> photos;
    if (selection.empty()) return photos;
    photos.reserve(selection.size());
    for (const Photo* photo : p.view.get()->photos) {
        if (selection.contains(photo->url)) photos.push_back(photo->url);
        if (photos.size() == selection.size()) break;
    }
    return photos;
}

} // namespace kelvaro
