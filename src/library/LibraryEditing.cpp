// What the user changes: edits, favourites, files that go to the Trash; and how writing went.
#include "library/LibraryParts.h"

#include "recipe/RecipeTexts.h"

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
        // The disk may have later edits than ours were. Where nothing could be written there is
        // nothing to look for, and the look would only try again.
        const bool isWritten = !outcome.edits.empty() || !outcome.favorites.empty();
        if (isWritten) requestScan(outcome.folder, false);
        return;
    }
    std::string problem = tellEdits ? outcome.editsFailure->message : std::string();
    if (tellFavorites)
        problem += (tellEdits ? "\n\n" : "") + texts::favoritesNotSaved({outcome.folder});
    if (!problem.empty()) errorMessage.set(std::move(problem));
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
    for (const PhotoUrl& photo : result.removed)
        touched.insert(FolderUrl(folderOf(photo)));
    PhotoSet left = selection->without(result.removed);
    if (left.size() != selection->size()) select(std::move(left));
    if (services.sessions) services.sessions->forget(result.removed);
    views.change(ViewQueue::Source::user,
                 [photos = result.removed](PhotoTable& table) { table.remove(photos); });
    for (const FolderUrl& folder : touched)
        if (isListed(folder)) requestScan(folder);
    bumpVersion();
}

void LibraryStore::openEditor(const PhotoUrl& photo) {
    Parts& p = *parts_;
    const bool isOpen = p.openPhoto.get() && **p.openPhoto == photo;
    if (this->photo(photo) && !isOpen) p.openPhoto.set(photo);
}

std::optional<PhotoUrl> LibraryStore::neighbour(int step) const {
    const Parts& p = *parts_;
    if (!p.openPhoto.get()) return std::nullopt;
    const auto at = p.positionOf(**p.openPhoto);
    const auto count = static_cast<std::int64_t>(p.view.get()->photos.size());
    const std::int64_t target = at ? static_cast<std::int64_t>(*at) + step : -1;
    if (target < 0 || target >= count) return std::nullopt;
    return p.view.get()->photos[static_cast<std::size_t>(target)]->url;
}

void LibraryStore::openNeighbour(int step) {
    if (const auto next = neighbour(step)) openEditor(*next);
}

void LibraryStore::closeEditor() {
    Parts& p = *parts_;
    if (!p.openPhoto.get()) return;
    p.scrollTarget.set(p.openPhoto.get());
    p.openPhoto.set(std::nullopt);
}

void LibraryStore::setAdjustments(const PhotoUrl& photo, const Adjustments& adjustments) {
    if (parts_->changeEdit(photo, adjustments)) parts_->bumpVersion();
}

void LibraryStore::revertToOriginal(const std::vector<PhotoUrl>& photos) {
    Parts& p = *parts_;
    for (const PhotoUrl& photo : photos)
        if (p.states.edit(photo)) p.changeEdit(photo, revertedToOriginal(p.editOf(photo)));
    p.bumpVersion();
}

void LibraryStore::copyAdjustments(const PhotoUrl& photo) {
    if (!this->photo(photo)) return;
    parts_->clipboard.set(parts_->editOf(photo));
    showNotice(std::string(texts::adjustmentsCopied));
}

void LibraryStore::setClipboard(const Adjustments& adjustments) {
    parts_->clipboard.set(adjustments);
}

void LibraryStore::pasteAdjustments(const std::vector<PhotoUrl>& photos, PasteGeometry geometry) {
    Parts& p = *parts_;
    if (!p.clipboard.get()) return;
    std::size_t count = 0;
    for (const PhotoUrl& photo : photos)
        count += p.changeEdit(photo, pasted(**p.clipboard, p.editOf(photo), geometry));
    if (count == 0) return;
    p.bumpVersion();
    notePaste();
    showNotice(pastedNotice(count));
}

void LibraryStore::notePaste() {
    parts_->pasteCount.set(parts_->pasteCount.get() + 1);
}

void LibraryStore::setFavorite(const std::vector<PhotoUrl>& photos, bool favorite) {
    parts_->changeFavorites(photos, favorite);
}

void LibraryStore::toggleFavorite(const std::vector<PhotoUrl>& photos) {
    const bool areAll = std::all_of(photos.begin(), photos.end(),
                                    [&](const PhotoUrl& url) { return isFavorite(url); });
    setFavorite(photos, !areAll);
}

// --- Trash ---

void LibraryStore::moveToTrash(std::vector<PhotoUrl> photos, Removed done) {
    if (isEditing()) closeEditor();
    Trash& trash = parts_->services.trash;
    parts_->removeFiles(
        std::move(photos), [&trash](const PhotoUrl& photo) { return trash.put(photo); },
        std::move(done));
}

void LibraryStore::deleteImmediately(std::vector<PhotoUrl> photos, Removed done) {
    if (isEditing()) closeEditor();
    FileSystem& files = parts_->services.files;
    parts_->removeFiles(
        std::move(photos), [&files](const PhotoUrl& photo) { return files.remove(photo); },
        [this, done = std::move(done)](const RemovalResult& result) {
            if (!result.refused.empty()) showError(texts::couldNotDelete(result.refused));
            if (done) done(result);
        });
}

} // namespace kelvaro
