#include "library/FolderStates.h"

namespace kelvaro {
namespace {

void applyEdit(FolderState& state, const std::string& name, const SharedEdit& edit) {
    if (edit && isEdited(edit->adjustments))
        state.edits.insert_or_assign(name, edit);
    else
        state.edits.erase(name);
}

void applyFavorite(FolderState& state, const std::string& name, bool favorite) {
    if (favorite)
        state.favorites.insert(name);
    else
        state.favorites.erase(name);
}

// Forgets the overrides that the scan has seen on the disk, and lays the others over what it found.
template<class T, class Apply>
void overlay(FolderState& state, std::map<std::string, Override<T>>& overrides,
             std::uint64_t writesSeen, std::vector<std::string>& names, Apply apply) {
    for (auto at = overrides.begin(); at != overrides.end();) {
        names.push_back(at->first);
        if (at->second.written != 0 && at->second.written <= writesSeen) {
            at = overrides.erase(at);
            continue;
        }
        if (state.photos->find(at->first)) apply(state, at->first, at->second.value);
        ++at;
    }
}

template<class T>
void markWritten(std::map<std::string, Override<T>>& overrides,
                 const std::map<std::string, std::uint64_t>& written, std::uint64_t number) {
    for (const auto& [name, revision] : written) {
        const auto found = overrides.find(name);
        if (found != overrides.end() && found->second.revision == revision)
            found->second.written = number;
    }
}

} // namespace

FolderState FolderStates::remove(const FolderUrl& folder) {
    const auto found = states_.find(folder);
    if (found == states_.end()) return {};
    FolderState state = std::move(found->second);
    states_.erase(found);
    return state;
}

FolderState* FolderStates::find(std::string_view folder) {
    const auto found = states_.find(FolderUrl(folder));
    return found == states_.end() ? nullptr : &found->second;
}

const FolderState* FolderStates::find(std::string_view folder) const {
    const auto found = states_.find(FolderUrl(folder));
    return found == states_.end() ? nullptr : &found->second;
}

MergeEffects FolderStates::merge(ScanResult&& result, FolderState& old) {
    FolderState& state = states_.at(result.folder);
    MergeEffects effects{.photosChanged = result.photosChanged,
                         .marksChanged = result.marksChanged};
    if (result.photosChanged) {
        old.photos = std::exchange(state.photos, result.memory->photos);
        old.metas = std::exchange(state.metas, std::move(result.metas));
    }
    old.edits = std::exchange(state.edits, std::move(result.edits));
    old.favorites = std::exchange(state.favorites, std::move(result.favorites));
    state.problems = std::move(result.problems);
    state.drive = result.memory->drive;
    overlay(state, state.editOverrides, result.writesSeen, effects.editNames, applyEdit);
    overlay(state, state.favoriteOverrides, result.writesSeen, effects.favoriteNames,
            applyFavorite);
    return effects;
}

void FolderStates::written(const WriteOutcome& outcome) {
    FolderState* state = find(outcome.folder);
    if (!state) return;
    markWritten(state->editOverrides, outcome.edits, outcome.number);
    markWritten(state->favoriteOverrides, outcome.favorites, outcome.number);
}

void FolderStates::setEdit(FolderState& state, const std::string& name, SharedEdit edit,
                           std::uint64_t revision) {
    if (state.photos && state.photos->find(name)) applyEdit(state, name, edit);
    state.editOverrides[name] = {std::move(edit), revision, 0};
}

void FolderStates::setFavorite(FolderState& state, const std::string& name, bool favorite,
                               std::uint64_t revision) {
    if (state.photos && state.photos->find(name)) applyFavorite(state, name, favorite);
    state.favoriteOverrides[name] = {favorite, revision, 0};
}

const Photo* FolderStates::photo(std::string_view url) const {
    const FolderState* state = find(folderOf(url));
    if (!state || !state->photos) return nullptr;
    const auto at = state->photos->find(fileNameOf(url));
    return at ? &state->photos->photos()[*at] : nullptr;
}

SharedEdit FolderStates::edit(std::string_view url) const {
    const FolderState* state = find(folderOf(url));
    if (!state) return nullptr;
    const auto found = state->edits.find(std::string(fileNameOf(url)));
    return found == state->edits.end() ? nullptr : found->second;
}

bool FolderStates::isFavorite(std::string_view url) const {
    const FolderState* state = find(folderOf(url));
    return state && state->favorites.contains(std::string(fileNameOf(url)));
}

SharedMeta FolderStates::meta(std::string_view url) const {
    const FolderState* state = find(folderOf(url));
    if (!state || !state->photos) return nullptr;
    const auto at = state->photos->find(fileNameOf(url));
    return at && *at < state->metas.size() ? state->metas[*at] : nullptr;
}

} // namespace kelvaro
