#include "library/LibraryStore.h"

#include "library/LibraryParts.h"
#include "library/LibrarySettings.h"

#include <algorithm>
#include <thread>

namespace kelvaro {
namespace {

constexpr int metadataThreads = 1; // the reader has its own besides

// Scans mostly wait for disks; one that hangs must not hold up the others.
int scanThreads() {
    return std::clamp(static_cast<int>(std::thread::hardware_concurrency()), 2, 4);
}

} // namespace

LibraryStore::Parts::Parts(const LibraryServices& given)
    : services(given),
      poster(given.main),
      metaReader(given.properties, given.metaCache, given.calendar),
      moved(given.files, metaReader),
      scan({given.files, given.random, given.texts, metaReader, given.drives, writes}),
      views(given.texts, given.calendar, given.clock, given.main,
            [this](ViewAnswer answer) { takeView(std::move(answer)); }),
      writer({given.files, given.random, given.main, given.folders.support, writes,
              [this](const WriteOutcome& outcome) { takeOutcome(outcome); },
              [this](const FoundUnsaved& found) { takeJournal(found); }}),
      metaJobs("kelvaro.metadata", metadataThreads,
               [this](const FolderUrl& folder) { runMetas(folder); }),
      scans("kelvaro.scan", scanThreads(), [this](const FolderUrl& folder) { runScan(folder); }) {
    const auto all = [this](auto&... fields) { (connect(fields), ...); };
    all(folders, missingFolders, indexingFolders, isReading, unsavedFavorites, unsavedEdits,
        version, favoriteRevision, metaRevision, view, filterOptions, scope, restriction, filter,
        searchText, searchFocus, sortOrder, thumbSize, selection, scrollTarget, openPhoto,
        infoRequest, info, exportRequest, clipboard, pasteCount, showsFilmstrip, appearance, notice,
        errorMessage);
}

LibraryStore::Parts::~Parts() {
    if (services.watcher) services.watcher->onChange(nullptr);
    if (services.drives) services.drives->onChange(nullptr);
    metaNotes.with([](auto& notes) {
        for (auto& [folder, note] : notes)
            note.cancellation->cancel();
    });
}

LibraryStore::LibraryStore(const LibraryServices& services)
    : parts_(std::make_unique<Parts>(services)) {
    parts_->start();
    parts_->slices.emplace(*this, parts_->changes, services.main);
}

LibraryStore::~LibraryStore() = default;

// --- Folders ---

AddFolderResult LibraryStore::addFolder(const std::filesystem::path& folder) {
    Parts& p = *parts_;
    const auto real = p.services.files.resolved(folder);
    const auto status = p.services.files.status(folder);
    if (!real || !status || status->kind != FileStatus::Kind::folder)
        return AddFolderResult::notAFolder;
    const FolderUrl url = real->string();
    for (const FolderUrl& listed : *p.folders) {
        if (listed == url) return AddFolderResult::alreadyListed;
        // One that was written into the settings under another path. An absent drive might not
        // answer for long, and has not the folder that was found.
        if (p.missingFolders->contains(listed)) continue;
        if (const auto other = p.services.files.resolved(listed); other && *other == *real)
            return AddFolderResult::alreadyListed;
    }
    p.folders.edit([&](auto& list) { list.push_back(url); });
    storeFolders(p.services.settings, *p.folders);
    p.states.add(url);
    p.requestScan(url);
    p.show();
    return AddFolderResult::added;
}

void LibraryStore::removeFolder(const FolderUrl& folder) {
    Parts& p = *parts_;
    if (!p.isListed(folder)) return;
    if (p.openPhoto.get() && folderOf(**p.openPhoto) == folder) closeEditor();
    p.folders.edit([&](auto& list) { std::erase(list, folder); });
    storeFolders(p.services.settings, *p.folders);
    p.forget(folder);
    if (*p.scope == Scope{Scope::Kind::folder, folder}) p.scope.set({});
    p.bumpVersion();
    p.favoriteRevision.set(*p.favoriteRevision + 1);
    p.show();
}

void LibraryStore::rescanFolder(const FolderUrl& folder) {
    if (parts_->isListed(folder)) parts_->requestScan(folder);
}

void LibraryStore::rescanAll() {
    const auto folders = *parts_->folders;
    for (const FolderUrl& folder : folders)
        parts_->requestScan(folder);
}

FolderPhotos LibraryStore::photos(const FolderUrl& folder) const {
    const FolderState* state = parts_->states.find(folder);
    return state ? state->photos : nullptr;
}

template<class Count>
static std::size_t sumOver(const LibraryStore& lib, const FolderStates& states, Count count) {
    std::size_t sum = 0;
    for (const auto& [folder, state] : states.all())
        if (!lib.missingFolders()->contains(folder)) sum += count(state);
    return sum;
}

std::size_t LibraryStore::photoCount() const {
    return sumOver(*this, parts_->states, [](const FolderState& state) {
        return state.photos ? state.photos->size() : 0;
    });
}

// --- Photos ---

const Photo* LibraryStore::photo(const PhotoUrl& url) const {
    return parts_->states.photo(url);
}

const Adjustments* LibraryStore::edit(const PhotoUrl& url) const {
    const SharedEdit edit = parts_->states.edit(url);
    return edit ? &edit->adjustments : nullptr;
}

std::optional<FileTime> LibraryStore::editDate(const PhotoUrl& url) const {
    const SharedEdit edit = parts_->states.edit(url);
    return edit ? editDateOf(*edit) : std::nullopt;
}

std::vector<PhotoUrl> LibraryStore::edits() const {
    std::vector<PhotoUrl> urls;
    for (const auto& [folder, state] : parts_->states.all())
        for (const auto& [name, edit] : state.edits)
            urls.push_back(photoUrl(folder, name));
    return urls;
}

std::size_t LibraryStore::editedCount() const {
    return sumOver(*this, parts_->states,
                   [](const FolderState& state) { return state.edits.size(); });
}

bool LibraryStore::isFavorite(const PhotoUrl& url) const {
    return parts_->states.isFavorite(url);
}

std::vector<PhotoUrl> LibraryStore::favorites() const {
    std::vector<PhotoUrl> urls;
    for (const auto& [folder, state] : parts_->states.all())
        for (const std::string& name : state.favorites)
            urls.push_back(photoUrl(folder, name));
    return urls;
}

std::size_t LibraryStore::favoriteCount() const {
    return sumOver(*this, parts_->states,
                   [](const FolderState& state) { return state.favorites.size(); });
}

SharedMeta LibraryStore::meta(const PhotoUrl& url) const {
    return parts_->states.meta(url);
}

void LibraryStore::inspect(std::function<void(const std::vector<KnownPhoto>&)> read) const {
    const LibraryQuery request = parts_->query();
    parts_->views.read([read = std::move(read), unavailable = request.unavailable](
                           const PhotoTable& table) { read(table.facts(unavailable)); });
}

std::vector<std::string> LibraryStore::readProblems(const FolderUrl& folder) const {
    const FolderState* state = parts_->states.find(folder);
    return state ? state->problems : std::vector<std::string>();
}

// --- Waiting ---

bool LibraryStore::isIdle() const {
    const Parts& p = *parts_;
    return p.indexingFolders->empty() && p.readingMetas.empty() && p.writer.isIdle() &&
           p.views.isIdle() && p.running == 0;
}

void LibraryStore::afterWrites(std::function<void()> job) {
    parts_->writer.post(std::move(job));
}

void LibraryStore::waitForWrites() {
    parts_->writer.waitUntilIdle();
}

} // namespace kelvaro
