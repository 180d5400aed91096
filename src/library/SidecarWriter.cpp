#include "library/SidecarWriter.h"

#include <algorithm>

namespace kelvaro {
namespace {

// Takes out what is on the disk, unless it has changed again since.
void eraseWritten(auto& pending, const std::map<std::string, std::uint64_t>& written) {
    for (const auto& [name, revision] : written) {
        const auto found = pending.find(name);
        if (found != pending.end() && found->second.revision == revision) pending.erase(found);
    }
}

} // namespace

SidecarWriter::SidecarWriter(Tools tools)
    : tools_(std::move(tools)),
      poster_(tools_.main),
      journal_(tools_.files, tools_.random, tools_.support) {
    ++running_;
    queue_.post([this] { adopt(); });
}

SidecarWriter::~SidecarWriter() {
    queue_.waitUntilIdle();
}

// What an earlier run of the program left behind becomes pending, unless the user has already made
// a later change.
void SidecarWriter::adopt() {
    auto left = journal_.read();
    if (left) journaled_ = *left;
    poster_.post([this, left = left ? std::move(*left) : Unsaved{}] {
        takeFound(left);
        --running_;
    });
}

void SidecarWriter::takeFound(const Unsaved& left) {
    FoundUnsaved found;
    pending_.with([&](auto& all) {
        for (const auto& [photo, edit] : left.edits) {
            const auto [at, isNew] = all[FolderUrl(folderOf(photo))].edits.try_emplace(
                std::string(fileNameOf(photo)), PendingEdit{edit, revision_ + 1, true, false});
            if (isNew) found.edits[photo] = {edit, ++revision_};
        }
        for (const auto& [photo, favorite] : left.favorites) {
            const auto [at, isNew] = all[FolderUrl(folderOf(photo))].favorites.try_emplace(
                std::string(fileNameOf(photo)), PendingFavorite{favorite, revision_ + 1, false});
            if (isNew) found.favorites[photo] = {favorite, ++revision_};
        }
    });
    if (!found.edits.empty() || !found.favorites.empty()) tools_.found(found);
}

std::uint64_t SidecarWriter::saveEdit(const PhotoUrl& photo, const Adjustments& adjustments,
                                      double editedAt) {
    const FolderUrl folder(folderOf(photo));
    const std::uint64_t revision = ++revision_;
    pending_.with([&](auto& pending) {
        PendingEdit& edit = pending[folder].edits[std::string(fileNameOf(photo))];
        edit = {{adjustments, editedAt}, revision, false, edit.isTold};
    });
    queueAttempt(folder, false);
    return revision;
}

std::uint64_t SidecarWriter::setFavorites(const FolderUrl& folder,
                                          const std::vector<std::string>& names, bool favorite) {
    const std::uint64_t revision = ++revision_;
    pending_.with([&](auto& pending) {
        auto& favorites = pending[folder].favorites;
        for (const std::string& name : names)
            favorites[name] = {favorite, revision, false};
    });
    queueAttempt(folder, false);
    return revision;
}

void SidecarWriter::retry(const FolderUrl& folder) {
    const bool waits = pending_.with([&](auto& pending) { return pending.contains(folder); });
    if (waits) queueAttempt(folder, true);
}

// One attempt writes whatever is pending when it begins, so that a slider's many saves become few.
void SidecarWriter::queueAttempt(const FolderUrl& folder, bool isRetry) {
    const bool isQueued =
        pending_.with([&](auto& pending) { return std::exchange(pending[folder].isQueued, true); });
    if (isQueued) return;
    ++running_;
    queue_.post([this, folder, isRetry] { attempt(folder, isRetry); });
}

void SidecarWriter::attempt(const FolderUrl& folder, bool isRetry) {
    const Pending tried = pending_.with([&](auto& pending) {
        pending[folder].isQueued = false;
        return pending[folder];
    });
    WriteOutcome outcome{.folder = folder, .wasRetry = isRetry};
    writeEdits(folder, tried, outcome);
    writeFavorites(folder, tried, outcome);
    outcome.number = ++tools_.writes;
    settle(tried, outcome);
    poster_.post([this, outcome = std::move(outcome)] {
        --running_;
        tools_.ended(outcome);
    });
}

bool SidecarWriter::isThere(const PhotoUrl& photo) {
    const auto found = tools_.files.status(photo);
    return found && found->kind == FileStatus::Kind::file;
}

// A drive that is gone may have left the empty folder that it was mounted on, where nothing must be
// written. A folder with other photos is the right one, and the photo's edit may be of use to it
// once it is put back, or found under another name.
bool SidecarWriter::isMounted(const PhotoUrl& photo) {
    if (isThere(photo)) return true;
    const auto entries = tools_.files.list(std::filesystem::path(folderOf(photo)));
    return entries && std::any_of(entries->begin(), entries->end(), [](const FolderEntry& entry) {
               return entry.name == Sidecar::folderName || photoKindOfName(entry.name);
           });
}

Result<void> SidecarWriter::writeEdit(const PhotoUrl& photo, const PendingEdit& pending) {
    Sidecar sidecar(tools_.files, tools_.random);
    const FolderUrl folder(folderOf(photo));
    if (!isMounted(photo)) return fail(Sidecar::FolderUnavailable(folder));
    if (pending.waited) {
        const auto stored = sidecar.loadPhoto(photo);
        if (stored && *stored && (*stored)->editedAt > pending.edit.editedAt) return {};
    }
    return sidecar.save(photo, pending.edit.adjustments, pending.edit.editedAt);
}

void SidecarWriter::writeEdits(const FolderUrl& folder, const Pending& pending,
                               WriteOutcome& outcome) {
    for (const auto& [name, edit] : pending.edits) {
        if (auto written = writeEdit(photoUrl(folder, name), edit)) {
            outcome.edits.emplace(name, edit.revision);
        } else {
            outcome.editsFailure = std::move(written).error();
            outcome.isNewEditsFailure = outcome.isNewEditsFailure || !edit.isTold;
        }
    }
}

void SidecarWriter::writeFavorites(const FolderUrl& folder, const Pending& pending,
                                   WriteOutcome& outcome) {
    if (pending.favorites.empty()) return;
    outcome.isNewFavoritesFailure =
        std::any_of(pending.favorites.begin(), pending.favorites.end(),
                    [](const auto& favorite) { return !favorite.second.isTold; });
    std::map<std::string, bool> changes;
    for (const auto& [name, favorite] : pending.favorites)
        changes.emplace(name, favorite.favorite);
    const bool hasAny = std::any_of(changes.begin(), changes.end(), [&](const auto& change) {
        return isThere(photoUrl(folder, change.first));
    });
    if (!hasAny && !isMounted(photoUrl(folder, changes.begin()->first))) {
        outcome.favoritesFailure = Sidecar::FolderUnavailable(folder);
        return;
    }
    auto names = FavoritesFile(tools_.files).change(folder, changes);
    if (!names) {
        outcome.favoritesFailure = std::move(names).error();
        return;
    }
    for (const auto& [name, favorite] : pending.favorites)
        outcome.favorites.emplace(name, favorite.revision);
}

// Takes out of the pending what was written and has not changed since.
void SidecarWriter::settle(const Pending& tried, WriteOutcome& outcome) {
    pending_.with([&](auto& all) {
        const auto found = all.find(outcome.folder);
        if (found == all.end()) return; // discarded meanwhile
        Pending& left = found->second;
        eraseWritten(left.edits, outcome.edits);
        eraseWritten(left.favorites, outcome.favorites);
        for (auto& [name, edit] : left.edits) {
            const auto before = tried.edits.find(name);
            if (before == tried.edits.end()) continue;
            if (before->second.revision == edit.revision) edit.waited = true;
            if (!outcome.edits.contains(name)) edit.isTold = true;
        }
        for (auto& [name, favorite] : left.favorites) {
            const auto before = tried.favorites.find(name);
            if (before != tried.favorites.end() && before->second.revision == favorite.revision)
                favorite.isTold = true;
        }
        outcome.editsPending = !left.edits.empty();
        outcome.favoritesPending = !left.favorites.empty();
        if (!outcome.editsPending && !outcome.favoritesPending && !left.isQueued) all.erase(found);
    });
    keepJournal(outcome.folder, tried, outcome);
}

// The journal has what failed, and no longer what is on the disk. Where the journal can't be
// written, the change stays in memory and the next attempt tries again.
void SidecarWriter::keepJournal(const FolderUrl& folder, const Pending& tried,
                                const WriteOutcome& outcome) {
    Unsaved put, done;
    for (const auto& [name, edit] : tried.edits) {
        const PhotoUrl photo = photoUrl(folder, name);
        if (!outcome.edits.contains(name))
            put.edits.emplace(photo, edit.edit);
        else if (journaled_.edits.contains(photo))
            done.edits.emplace(photo, edit.edit);
    }
    for (const auto& [name, favorite] : tried.favorites) {
        const PhotoUrl photo = photoUrl(folder, name);
        if (!outcome.favorites.contains(name))
            put.favorites.emplace(photo, favorite.favorite);
        else if (journaled_.favorites.contains(photo))
            done.favorites.emplace(photo, journaled_.favorites.at(photo));
    }
    if (put.isEmpty() && done.isEmpty()) return;
    if (!journal_.change(put, done)) return;
    for (const auto& [photo, edit] : put.edits)
        journaled_.edits.insert_or_assign(photo, edit);
    for (const auto& [photo, favorite] : put.favorites)
        journaled_.favorites.insert_or_assign(photo, favorite);
    for (const auto& [photo, edit] : done.edits)
        journaled_.edits.erase(photo);
    for (const auto& [photo, favorite] : done.favorites)
        journaled_.favorites.erase(photo);
}

void SidecarWriter::discard() {
    pending_.with([](auto& pending) { pending.clear(); });
    queue_.post([this] {
        if (journaled_.isEmpty()) return;
        if (journal_.change({}, journaled_)) journaled_ = {};
    });
}

} // namespace kelvaro
