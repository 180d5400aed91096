// What the window keeps here: its settings, messages, and the question before quitting.
#include "library/LibraryParts.h"

#include "library/LibrarySettings.h"

namespace kelvaro {

void LibraryStore::setShowsFilmstrip(bool shows) {
    if (parts_->showsFilmstrip.update(shows))
        parts_->services.settings.set(settingKeys::showsFilmstrip, shows);
}

void LibraryStore::setAppearance(AppearanceMode mode) {
    if (parts_->appearance.update(mode))
        parts_->services.settings.set(settingKeys::appearance, std::string(rawValue(mode)));
}

void LibraryStore::showNotice(std::string text) {
    parts_->notice.set(Notice{std::move(text), ++parts_->noticeNumber});
}

void LibraryStore::clearNotice() {
    parts_->notice.update(std::nullopt);
}

void LibraryStore::showError(std::string text) {
    parts_->errorMessage.set(std::move(text));
}

void LibraryStore::clearError() {
    parts_->errorMessage.update(std::nullopt);
}

// In the sidebar's order; then those of photos that are no longer listed.
std::optional<texts::Alert> LibraryStore::quitCheck() const {
    const Parts& p = *parts_;
    FolderSet withEdits = *p.unsavedEdits;
    if (p.heldEdits)
        for (const PhotoUrl& photo : p.heldEdits->unsaved())
            withEdits.insert(FolderUrl(folderOf(photo)));
    std::vector<FolderUrl> edits, favorites;
    for (const FolderUrl& folder : *p.folders) {
        if (withEdits.erase(folder) > 0) edits.push_back(folder);
        if (p.unsavedFavorites->contains(folder)) favorites.push_back(folder);
    }
    edits.insert(edits.end(), withEdits.begin(), withEdits.end());
    if (edits.empty() && favorites.empty()) return std::nullopt;
    return texts::unsavedQuestion(edits, favorites);
}

void LibraryStore::discardUnsaved() {
    if (parts_->heldEdits) parts_->heldEdits->discard();
    parts_->writer.discard();
    parts_->unsavedEdits.update({});
    parts_->unsavedFavorites.update({});
}

void LibraryStore::setHeldEdits(HeldEdits* held) {
    parts_->heldEdits = held;
}

} // namespace kelvaro
