// How the store follows the disk: scans asked for and taken over, folders and drives that come and
// go, metadata that is read for new photos.
#include "library/LibraryParts.h"

#include "library/LibrarySettings.h"

#include <algorithm>
#include <chrono>

namespace kelvaro {
namespace {

namespace fs = std::filesystem;

constexpr double mergeBudgetSeconds = 0.003; // for one turn of the main thread
// What is shown is read and drawn anew after each turn: while many folders come, seldom.
constexpr std::chrono::milliseconds gathering(15), gatheringMany(60);
constexpr std::size_t manyFolders = 150;

bool isBelow(const std::string& path, const std::string& ancestor) {
    if (ancestor == "/") return true;
    return path.size() > ancestor.size() && path.starts_with(ancestor) &&
           path[ancestor.size()] == '/';
}

} // namespace

void LibraryStore::Parts::start() {
    const StoredLibrary stored = readLibrarySettings(services.settings);
    sortOrder.set(stored.sortOrder);
    thumbSize.set(stored.thumbSize.value_or(defaultThumbSize));
    showsFilmstrip.set(stored.showsFilmstrip);
    appearance.set(stored.appearance);
    folders.set(stored.folders);
    if (services.watcher) {
        services.watcher->onChange([this](const fs::path& folder) {
            poster.post([this, folder] { folderChanged(folder); });
        });
    }
    if (services.drives) {
        services.drives->onChange([this] { poster.post([this] { drivesChanged(); }); });
    }
    for (const FolderUrl& folder : *folders) {
        states.add(folder);
        requestScan(folder);
    }
    show();
    watchDay();
}

bool LibraryStore::Parts::isListed(const FolderUrl& folder) const {
    return std::find(folders->begin(), folders->end(), folder) != folders->end();
}

void LibraryStore::Parts::requestScan(const FolderUrl& folder, bool photosToo) {
    scanNotes.with([&](auto& notes) {
        auto [at, isNew] = notes.try_emplace(folder);
        if (isNew) at->second.generation = ++generation;
        at->second.photosToo = at->second.photosToo || photosToo;
        ++at->second.asked;
    });
    indexingFolders.edit([&](FolderSet& set) { set.insert(folder); });
    toScan = indexingFolders->size();
    updateStreaming();
    scans.add(folder);
}

void LibraryStore::Parts::runScan(const FolderUrl& folder) {
    ScanArrival arrival;
    ScanRequest request{.folder = folder, .memory = nullptr};
    const bool isWanted = scanNotes.with([&](auto& notes) {
        const auto note = notes.find(folder);
        if (note == notes.end()) return false;
        request.memory = note->second.memory;
        request.photos = std::exchange(note->second.photosToo, false);
        arrival.generation = note->second.generation;
        arrival.asked = note->second.asked;
        return true;
    });
    if (!isWanted) return;
    if (services.watcher) { // before the look, so that no change falls between
        services.watcher->watch(folder);
        services.watcher->watch(fs::path(folder) / Sidecar::folderName);
    }
    arrival.result = scan.run(request);
    if (arrival.result.photosChanged)
        moved.setFolder(*arrival.result.memory->photos, std::move(arrival.result.lost));
    scanNotes.with([&](auto& notes) {
        const auto note = notes.find(folder);
        if (note == notes.end() || note->second.generation != arrival.generation) return;
        if (arrival.result.isMissing)
            note->second.photosToo = true; // whatever the next one is asked for
        else
            note->second.memory = arrival.result.memory;
    });
    const bool isFirst = arrivals.with([&](auto& waiting) {
        waiting.push_back(std::move(arrival));
        return waiting.size() == 1;
    });
    if (!isFirst) return;
    views.postLater(toScan > manyFolders && !isFirstTurn.exchange(false) ? gatheringMany
                                                                         : gathering,
                    [this] { poster.post([this] { takeScans(); }); });
}

// Takes over what has arrived, for a moment; the rest waits for the next turn.
void LibraryStore::Parts::takeScans() {
    const double end = services.clock.monotonicSeconds() + mergeBudgetSeconds;
    for (;;) {
        std::optional<ScanArrival> arrival = arrivals.with([](auto& waiting) {
            std::optional<ScanArrival> first;
            if (!waiting.empty()) {
                first = std::move(waiting.front());
                waiting.pop_front();
            }
            return first;
        });
        if (!arrival) return;
        const FolderUrl folder = arrival->result.folder;
        bool isLatest = false;
        const bool isCurrent = scanNotes.with([&](auto& notes) {
            const auto note = notes.find(folder);
            if (note == notes.end() || note->second.generation != arrival->generation) return false;
            isLatest = note->second.asked == arrival->asked;
            return true;
        });
        if (isCurrent) {
            takeScan(std::move(arrival->result));
            if (isLatest) indexingFolders.edit([&](FolderSet& set) { set.erase(folder); });
            toScan = indexingFolders->size();
            updateStreaming();
        }
        if (services.clock.monotonicSeconds() < end) continue;
        const bool isMore = arrivals.with([](auto& waiting) { return !waiting.empty(); });
        if (isMore) poster.post([this] { takeScans(); });
        return;
    }
}

void LibraryStore::Parts::takeScan(ScanResult result) {
    if (result.isMissing)
        takeMissing(result.folder);
    else
        takeListing(std::move(result));
}

void LibraryStore::Parts::takeMissing(const FolderUrl& folder) {
    if (services.watcher) {
        // Whatever is left of its path tells when it comes back.
        fs::path ancestor = fs::path(folder).parent_path();
        while (ancestor.has_relative_path() && !services.watcher->watch(ancestor))
            ancestor = ancestor.parent_path();
        watchedAncestors.insert(ancestor.string());
    }
    if (missingFolders->contains(folder)) return;
    missingFolders.edit([&](FolderSet& set) { set.insert(folder); });
    bumpVersion();
    show();
}

void LibraryStore::Parts::takeListing(ScanResult result) {
    const FolderUrl folder = result.folder;
    const auto marks = result.marks;
    if (missingFolders->contains(folder)) {
        missingFolders.edit([&](FolderSet& set) { set.erase(folder); });
        bumpVersion();
        show();
    }
    reportProblems(folder, result.problems);
    FolderState old;
    const MergeEffects effects = states.merge(std::move(result), old);
    const FolderState& state = *states.find(folder);
    const bool isOther = effects.photosChanged || effects.marksChanged;
    if (isOther) {
        const FolderPhotos photos = state.photos;
        const bool photosChanged = effects.photosChanged;
        const auto metas = std::make_shared<const std::vector<SharedMeta>>(
            photosChanged ? state.metas : std::vector<SharedMeta>());
        views.change(ViewQueue::Source::stream, [=](PhotoTable& table) {
            if (photosChanged) table.setFolder(photos, *metas);
            table.setMarks(photos->folder(), *marks);
        });
        if (photosChanged) requestMetas(folder);
    }
    showMarks(folder, effects);
    views.dispose(std::move(old));
    if (isOther || !effects.editNames.empty()) bumpVersion();
    if (isOther || !effects.favoriteNames.empty()) favoriteRevision.set(*favoriteRevision + 1);
    writer.retry(folder);
    retryHeld(folder);
}

void LibraryStore::Parts::retryHeld(const FolderUrl& folder) {
    if (!heldEdits) return;
    const auto held = heldEdits->unsaved();
    const auto isIn = [&](const PhotoUrl& photo) { return folderOf(photo) == folder; };
    if (std::any_of(held.begin(), held.end(), isIn)) heldEdits->retry();
}

// A failure is told once, after all scans, and again only when it has become another one.
void LibraryStore::Parts::reportProblems(const FolderUrl& folder,
                                         const std::vector<std::string>& problems) {
    auto& told = reported[folder];
    for (const std::string& line : problems) {
        if (std::find(told.begin(), told.end(), line) == told.end()) toReport.push_back(line);
    }
    told = problems;
}

void LibraryStore::Parts::updateStreaming() {
    const bool isScanning = !indexingFolders->empty();
    const bool isStreaming = isScanning || !readingMetas.empty();
    const bool wasStreaming = views.isStreaming();
    views.setStreaming(isStreaming);
    isReading.update(isStreaming);
    if (wasStreaming && !isStreaming) {
        show();
        lookForMoved();
    }
    if (!isScanning && !toReport.empty())
        errorMessage.set(texts::readFailures(std::exchange(toReport, {})));
}

void LibraryStore::Parts::folderChanged(const fs::path& changed) {
    const FolderUrl url = changed.string();
    if (isListed(url)) requestScan(url);
    if (changed.filename() == Sidecar::folderName) {
        const FolderUrl parent = changed.parent_path().string();
        if (isListed(parent)) requestScan(parent, false);
    }
    if (!watchedAncestors.contains(url)) return;
    const FolderSet missing = *missingFolders;
    for (const FolderUrl& folder : missing)
        if (isBelow(folder, url)) requestScan(folder);
}

void LibraryStore::Parts::drivesChanged() {
    const auto listed = *folders;
    for (const FolderUrl& folder : listed) {
        const FolderState* state = states.find(folder);
        const bool isMoved = state && services.drives->driveOf(folder) != state->drive;
        if (isMoved || missingFolders->contains(folder)) requestScan(folder);
    }
}

void LibraryStore::Parts::forget(const FolderUrl& folder) {
    scans.drop(folder);
    metaJobs.drop(folder);
    views.dispose(scanNotes.with([&](auto& notes) { return notes.extract(folder); }));
    views.dispose(metaNotes.with([&](auto& notes) {
        auto note = notes.extract(folder);
        if (note) note.mapped().cancellation->cancel();
        return note;
    }));
    if (services.watcher) {
        services.watcher->unwatch(folder);
        services.watcher->unwatch(fs::path(folder) / Sidecar::folderName);
    }
    views.change(ViewQueue::Source::user,
                 [folder](PhotoTable& table) { table.removeFolder(folder); });
    views.dispose(states.remove(folder));
    writer.post([this, folder] { moved.forget(folder); });
    reported.erase(folder);
    readingMetas.erase(folder);
    for (auto* set : {&missingFolders, &indexingFolders, &unsavedFavorites, &unsavedEdits})
        set->edit([&](FolderSet& all) { all.erase(folder); });
    updateStreaming();
}

void LibraryStore::Parts::requestMetas(const FolderUrl& folder) {
    const FolderState& state = *states.find(folder);
    const bool isComplete = std::none_of(state.metas.begin(), state.metas.end(),
                                         [](const SharedMeta& meta) { return !meta; });
    std::vector<SharedMeta> known = isComplete ? std::vector<SharedMeta>() : state.metas;
    views.dispose(metaNotes.with([&](auto& notes) {
        MetaNote& note = notes[folder];
        if (note.cancellation) note.cancellation->cancel();
        return std::exchange(
            note, MetaNote{state.photos, std::move(known), std::make_shared<Cancellation>()});
    }));
    if (isComplete) {
        readingMetas.erase(folder);
        return;
    }
    readingMetas.insert(folder);
    metaJobs.add(folder);
}

void LibraryStore::Parts::runMetas(const FolderUrl& folder) {
    const auto note = metaNotes.with([&](auto& notes) {
        const auto found = notes.find(folder);
        return found == notes.end() ? std::optional<MetaNote>() : std::optional(found->second);
    });
    if (!note) return;
    std::vector<Photo> unknown;
    for (std::size_t i = 0; i < note->known.size(); ++i)
        if (!note->known[i]) unknown.push_back(note->photos->photos()[i]);
    metaReader.read(folder, unknown, {}, *note->cancellation, [&](const PhotoMetas& batch) {
        moved.addNew(batch, services.clock.monotonicSeconds());
        poster.post([this, folder, batch] { takeMetas(folder, batch); });
    });
    poster.post([this, folder, cancellation = note->cancellation] {
        if (cancellation->isCancelled()) return; // another run follows, or the folder has gone
        readingMetas.erase(folder);
        updateStreaming();
    });
}

// Once everything has been looked at, so that nothing is taken for the only one too early; on the
// writers' queue, in turn with the user's own changes.
void LibraryStore::Parts::lookForMoved() {
    if (!moved.isPossible()) return;
    ++running;
    writer.post([this] {
        poster.post([this, photos = moved.bring(services.clock.monotonicSeconds())] {
            --running;
            if (photos.empty()) return;
            notice.set(Notice{texts::movedNotice(photos.size()), ++noticeNumber});
            FolderSet touched;
            for (const PhotoUrl& photo : photos)
                touched.insert(FolderUrl(folderOf(photo)));
            for (const FolderUrl& folder : touched)
                if (isListed(folder)) requestScan(folder, false);
        });
    });
}

void LibraryStore::Parts::takeMetas(const FolderUrl& folder, const PhotoMetas& metas) {
    FolderState* state = states.find(folder);
    if (!state || !state->photos) return;
    for (const auto& [url, meta] : metas) {
        const auto at = state->photos->find(fileNameOf(url));
        if (meta && at && isValid(*meta, state->photos->photos()[*at])) state->metas[*at] = meta;
    }
    views.change(ViewQueue::Source::stream, [metas](PhotoTable& table) { table.setMeta(metas); });
    metaRevision.set(*metaRevision + 1);
}

} // namespace kelvaro
