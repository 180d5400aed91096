#include "library/LibraryStore.h"

#include "library/LibraryParts.h"
#include "library/LibrarySettings.h"
#include "recipe/RecipeTexts.h"

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

LibraryStore::Parts::Slices::Slices(const LibraryStore& lib, const Changes& changes,
                                    MainThread& main)
    : root(lib, changes, main, kelvaro::rootState),
      command(lib, changes, main, kelvaro::commandState),
      sidebar(lib, changes, main, kelvaro::sidebarState),
      gridTools(lib, changes, main, kelvaro::gridToolsState),
      search(lib, changes, main, kelvaro::searchState),
      filter(lib, changes, main, kelvaro::filterState),
      subtitle(lib, changes, main, kelvaro::gridSubtitle),
      editor(lib, changes, main, kelvaro::editorTools) {}

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
    all(folders, missingFolders, indexingFolders, unsavedFavorites, unsavedEdits, version,
        favoriteRevision, metaRevision, view, filterOptions, scope, restriction, filter, searchText,
        searchFocus, sortOrder, thumbSize, selection, scrollTarget, openPhoto, infoRequest, info,
        exportRequest, clipboard, showsFilmstrip, appearance, notice, errorMessage);
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

LibraryStore::~LibraryStore() {
    parts_->editor.reset(); // it saves what it has
}

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
    return edit ? std::optional(timeFromSeconds(edit->editedAt)) : std::nullopt;
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

// --- What the grid shows ---

std::optional<EmptyState> LibraryStore::emptyState() const {
    const Parts& p = *parts_;
    if (!p.view.get()->photos.empty() || !p.indexingFolders->empty()) return std::nullopt;
    return kelvaro::emptyState(p.query(),
                               {.hasFolders = !p.folders->empty(),
                                .isFolderUnavailable = p.scope->kind == Scope::Kind::folder &&
                                                       p.missingFolders->contains(p.scope->folder),
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
    if (!p.selection.update(std::move(selection)) || !p.services.sessions) return;
    const auto first = targets();
    const Photo* photo = first.empty() ? nullptr : this->photo(first.front());
    if (photo)
        p.services.sessions->prewarm(*photo, p.editOf(photo->url));
    else
        p.services.sessions->cancelPrewarm();
}

void LibraryStore::selectAll() {
    PhotoSet all;
    for (const Photo* photo : parts_->view.get()->photos)
        all.insert(photo->url);
    setSelection(std::move(all));
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

// --- Editing ---

LibraryEditor* LibraryStore::editor() const {
    return parts_->editor.get();
}

void LibraryStore::openEditor(const PhotoUrl& photo) {
    Parts& p = *parts_;
    const Photo* found = this->photo(photo);
    if (!found || (p.openPhoto.get() && **p.openPhoto == photo)) return;
    p.editor.reset(); // saves the photo that was open
    p.editorKnows = p.editOf(photo);
    if (p.services.editors) p.editor = p.services.editors->open(*found, p.editorKnows);
    p.openPhoto.set(photo);
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
    p.editor.reset();
    p.scrollTarget.set(p.openPhoto.get());
    p.openPhoto.set(std::nullopt);
}

void LibraryStore::setAdjustments(const PhotoUrl& photo, const Adjustments& adjustments) {
    Parts& p = *parts_;
    if (p.openPhoto.get() && **p.openPhoto == photo) p.editorKnows = adjustments;
    if (p.changeEdit(photo, adjustments)) p.bumpVersion();
}

void LibraryStore::revertToOriginal(const std::vector<PhotoUrl>& photos) {
    Parts& p = *parts_;
    for (const PhotoUrl& photo : photos)
        if (p.states.edit(photo)) p.changeEdit(photo, revertedToOriginal(p.editOf(photo)));
    p.bumpVersion();
    p.tellEditor();
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
    p.tellEditor();
    showNotice(pastedNotice(count));
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

// --- Window ---

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

std::optional<texts::Alert> LibraryStore::quitCheck() const {
    const Parts& p = *parts_;
    std::vector<FolderUrl> edits, favorites; // in the sidebar's order
    for (const FolderUrl& folder : *p.folders) {
        if (p.unsavedEdits->contains(folder)) edits.push_back(folder);
        if (p.unsavedFavorites->contains(folder)) favorites.push_back(folder);
    }
    if (edits.empty() && favorites.empty()) return std::nullopt;
    return texts::unsavedQuestion(edits, favorites);
}

void LibraryStore::discardUnsaved() {
    parts_->writer.discard();
    parts_->unsavedEdits.update({});
    parts_->unsavedFavorites.update({});
}

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

// --- Fields ---

const Changes& LibraryStore::changes() const {
    return parts_->changes;
}

#define KELVARO_FIELD(type, name)                                                                  \
    const Published<type>& LibraryStore::name() const {                                            \
        return parts_->name;                                                                       \
    }
KELVARO_FIELD(std::vector<FolderUrl>, folders)
KELVARO_FIELD(LibraryStore::FolderSet, missingFolders)
KELVARO_FIELD(LibraryStore::FolderSet, indexingFolders)
KELVARO_FIELD(LibraryStore::FolderSet, unsavedFavorites)
KELVARO_FIELD(LibraryStore::FolderSet, unsavedEdits)
KELVARO_FIELD(std::uint64_t, version)
KELVARO_FIELD(std::uint64_t, favoriteRevision)
KELVARO_FIELD(std::uint64_t, metaRevision)
KELVARO_FIELD(std::shared_ptr<const LibraryView>, view)
KELVARO_FIELD(FilterOptions, filterOptions)
KELVARO_FIELD(Scope, scope)
KELVARO_FIELD(SharedRestriction, restriction)
KELVARO_FIELD(PhotoFilter, filter)
KELVARO_FIELD(std::string, searchText)
KELVARO_FIELD(bool, searchFocus)
KELVARO_FIELD(SortOrder, sortOrder)
KELVARO_FIELD(double, thumbSize)
KELVARO_FIELD(PhotoSet, selection)
KELVARO_FIELD(std::optional<PhotoUrl>, scrollTarget)
KELVARO_FIELD(std::optional<PhotoUrl>, openPhoto)
KELVARO_FIELD(std::optional<InfoRequest>, infoRequest)
KELVARO_FIELD(std::optional<PhotoInfo>, info)
KELVARO_FIELD(std::optional<ExportRequest>, exportRequest)
KELVARO_FIELD(std::optional<Adjustments>, clipboard)
KELVARO_FIELD(bool, showsFilmstrip)
KELVARO_FIELD(AppearanceMode, appearance)
KELVARO_FIELD(std::optional<Notice>, notice)
KELVARO_FIELD(std::optional<std::string>, errorMessage)
#undef KELVARO_FIELD

#define KELVARO_SLICE(State, name, field)                                                          \
    const LibrarySlice<State>& LibraryStore::name() const {                                        \
        return parts_->slices->field;                                                              \
    }
KELVARO_SLICE(RootState, rootState, root)
KELVARO_SLICE(CommandState, commandState, command)
KELVARO_SLICE(SidebarState, sidebarState, sidebar)
KELVARO_SLICE(GridToolsState, gridToolsState, gridTools)
KELVARO_SLICE(SearchState, searchState, search)
KELVARO_SLICE(FilterState, filterState, filter)
KELVARO_SLICE(std::string, gridSubtitle, subtitle)
KELVARO_SLICE(EditorTools, editorTools, editor)
#undef KELVARO_SLICE

} // namespace kelvaro
