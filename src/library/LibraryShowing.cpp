// What the grid shows: questions to the view queue and their answers.
#include "library/LibraryParts.h"

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

void LibraryStore::Parts::takeView(ViewAnswer answer) {
    const auto old = *view;
    if (answer.kept && answer.question == viewQuestion) selection.set(std::move(*answer.kept));
    if (answer.options) filterOptions.update(std::move(*answer.options));
    view.set(std::move(answer.view));
    views.dispose(old);
}

// Single marks that differ from what the table has.
void LibraryStore::Parts::showMarks(const FolderUrl& folder, const MergeEffects& effects) {
    if (effects.editNames.empty() && effects.favoriteNames.empty()) return;
    struct Mark {
        PhotoUrl photo;
        std::optional<FileTime> editDate;
        bool isFavorite = false;
    };
    const FolderState& state = *states.find(folder);
    std::vector<Mark> marks;
    const auto add = [&](const std::string& name) {
        const auto at = state.photos ? state.photos->find(name) : std::nullopt;
        if (!at) return;
        const auto edit = state.edits.find(name);
        marks.push_back({state.photos->photos()[*at].url,
                         edit == state.edits.end() ? std::optional<FileTime>()
                                                   : timeFromSeconds(edit->second->editedAt),
                         state.favorites.contains(name)});
    };
    std::for_each(effects.editNames.begin(), effects.editNames.end(), add);
    std::for_each(effects.favoriteNames.begin(), effects.favoriteNames.end(), add);
    views.change(ViewQueue::Source::user, [marks = std::move(marks)](PhotoTable& table) {
        for (const Mark& mark : marks) {
            table.setEdit(mark.photo, mark.editDate.has_value(), mark.editDate);
            table.setFavorite(mark.photo, mark.isFavorite);
        }
    });
}

std::optional<std::size_t> LibraryStore::Parts::positionOf(const PhotoUrl& photo) const {
    const auto& photos = (*view)->photos;
    const auto isIt = [&](const Photo* one) { return one->url == photo; };
    if (positionHint < photos.size() && isIt(photos[positionHint])) return positionHint;
    const auto found = std::find_if(photos.begin(), photos.end(), isIt);
    if (found == photos.end()) return std::nullopt;
    positionHint = static_cast<std::size_t>(found - photos.begin());
    return positionHint;
}

} // namespace kelvaro
