// What the user changes: edits, favourites, files that go to the Trash; and how writing went.
#include "library/LibraryParts.h"

#include <algorithm>

namespace kelvaro {

Adjustments LibraryStore::Parts::editOf(const PhotoUrl& photo) const {
    const SharedEdit edit = states.edit(photo);
    return edit ? edit->adjustments : Adjustments{};
}

// False for a photo that is not in the library.
bool LibraryStore::Parts::changeEdit(const PhotoUrl& photo, const Adjustments& adjustments) {
    if (!states.photo(photo)) return false;
    const FolderUrl folder(folderOf(photo));
    const std::string name(fileNameOf(photo));
    const double date = services.clock.wallSeconds();
    const std::uint64_t revision = writer.saveEdit(photo, adjustments, date);
    states.setEdit(*states.find(folder), name,
                   std::make_shared<const StoredEdit>(StoredEdit{adjustments, date}), revision);
    showMarks(folder, {.editNames = {name}});
    return true;
}

void LibraryStore::Parts::changeFavorites(const std::vector<PhotoUrl>& photos, bool favorite) {
    std::map<FolderUrl, MergeEffects> changed;
    for (const PhotoUrl& photo : photos) {
        if (!states.photo(photo) || states.isFavorite(photo) == favorite) continue;
        changed[FolderUrl(folderOf(photo))].favoriteNames.emplace_back(fileNameOf(photo));
    }
    if (changed.empty()) return;
    for (const auto& [folder, effects] : changed) {
        const auto revision = writer.setFavorites(folder, effects.favoriteNames, favorite);
        FolderState& state = *states.find(folder);
        for (const std::string& name : effects.favoriteNames)
            states.setFavorite(state, name, favorite, revision);
        showMarks(folder, effects);
    }
    favoriteRevision.set(*favoriteRevision + 1);
}

void LibraryStore::Parts::tellEditor() {
    if (!editor || !*openPhoto) return;
    Adjustments now = editOf(**openPhoto);
    if (now == editorKnows) return;
    editorKnows = std::move(now);
    editor->adjustmentsChanged(editorKnows);
}

void LibraryStore::Parts::takeOutcome(const WriteOutcome& outcome) {
    states.written(outcome);
    if (!isListed(outcome.folder)) return;
    const auto note = [&](Published<FolderSet>& set, bool failed, bool isPending) {
        const bool was = set->contains(outcome.folder);
        if (failed && !was) set.edit([&](FolderSet& all) { all.insert(outcome.folder); });
        if (!failed && was && !isPending)
            set.edit([&](FolderSet& all) { all.erase(outcome.folder); });
        return failed && (!was || !outcome.wasRetry);
    };
    const bool tellEdits =
        note(unsavedEdits, outcome.editsFailure.has_value(), outcome.editsPending) &&
        outcome.isNewEditsFailure; // once, however long a slider is dragged
    const bool tellFavorites =
        note(unsavedFavorites, outcome.favoritesFailure.has_value(), outcome.favoritesPending) &&
        outcome.isNewFavoritesFailure;
    if (outcome.wasRetry) {
        requestScan(outcome.folder, false); // the disk may have later edits than ours were
    } else if (tellEdits) {
        errorMessage.set(outcome.editsFailure->message);
    } else if (tellFavorites) {
        errorMessage.set(texts::favoritesNotSaved({outcome.folder}));
    }
}

// What an earlier run of the program could not write, laid over what the folders have.
void LibraryStore::Parts::takeJournal(const FoundUnsaved& found) {
    std::map<FolderUrl, MergeEffects> changed;
    for (const auto& [photo, edit] : found.edits) {
        const FolderUrl folder(folderOf(photo));
        FolderState* state = isListed(folder) ? states.find(folder) : nullptr;
        if (!state) continue;
        const std::string name(fileNameOf(photo));
        states.setEdit(*state, name, std::make_shared<const StoredEdit>(edit.first), edit.second);
        changed[folder].editNames.push_back(name);
    }
    for (const auto& [photo, favorite] : found.favorites) {
        const FolderUrl folder(folderOf(photo));
        FolderState* state = isListed(folder) ? states.find(folder) : nullptr;
        if (!state) continue;
        const std::string name(fileNameOf(photo));
        states.setFavorite(*state, name, favorite.first, favorite.second);
        changed[folder].favoriteNames.push_back(name);
    }
    for (const auto& change : changed) {
        const FolderUrl& folder = change.first;
        const MergeEffects& effects = change.second;
        showMarks(folder, effects);
        if (!effects.editNames.empty())
            unsavedEdits.edit([&](FolderSet& all) { all.insert(folder); });
        if (!effects.favoriteNames.empty())
            unsavedFavorites.edit([&](FolderSet& all) { all.insert(folder); });
        writer.retry(folder);
    }
    if (changed.empty()) return;
    bumpVersion();
    favoriteRevision.set(*favoriteRevision + 1);
}

// Runs after the writes so far: a photo that leaves has its edit beside it.
void LibraryStore::Parts::removeFiles(std::vector<PhotoUrl> photos, Remove remove, Removed done) {
    ++running;
    writer.post([this, photos = std::move(photos), remove = std::move(remove),
                 done = std::move(done)]() mutable {
        RemovalResult result;
        for (PhotoUrl& photo : photos) {
            const auto removed = remove(photo);
            const bool isGone = removed || removed.error().kind == FailureKind::notFound;
            (isGone ? result.removed : result.refused).push_back(std::move(photo));
        }
        poster.post([this, result = std::move(result), done = std::move(done)] {
            --running;
            takeRemoval(result);
            if (done) done(result);
        });
    });
}

void LibraryStore::Parts::takeRemoval(const RemovalResult& result) {
    if (result.removed.empty()) return;
    FolderSet touched;
    PhotoSet left = *selection;
    for (const PhotoUrl& photo : result.removed) {
        touched.insert(FolderUrl(folderOf(photo)));
        left.erase(photo);
    }
    if (left.size() != selection->size()) selection.set(std::move(left));
    if (services.sessions) services.sessions->forget(result.removed);
    views.change(ViewQueue::Source::user,
                 [photos = result.removed](PhotoTable& table) { table.remove(photos); });
    for (const FolderUrl& folder : touched)
        if (isListed(folder)) requestScan(folder);
    bumpVersion();
}

} // namespace kelvaro
