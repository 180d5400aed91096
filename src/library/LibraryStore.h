// The one model behind the library window: folders, their photos, edits, favourites, metadata, what
// the grid shows of them, and what the user does with them. Originals are only listed and read.
//
// Everything here lives on the main thread and never waits for a disk. Folders are scanned, files
// written and the list is searched and sorted on queues of the store's own; their results come back
// as immutable blocks that are swapped in, so that no result holds the main thread however large it
// is. `visible` therefore follows a change a moment later, with one `view` change for many.
#pragma once

#include "base/Clock.h"
#include "base/MainThread.h"
#include "base/Published.h"
#include "library/LibrarySlice.h"
#include "library/LibraryTexts.h"
#include "library/LibraryViews.h"
#include "library/OpenPhotoWork.h"
#include "library/Photo.h"
#include "library/PhotoInfo.h"
#include "library/PhotoMeta.h"
#include "library/PhotoQuery.h"
#include "library/PhotoSet.h"
#include "platform/DriveTable.h"
#include "platform/FileSystem.h"
#include "platform/FolderWatcher.h"
#include "platform/LocalCalendar.h"
#include "platform/MetaCache.h"
#include "platform/PhotoProperties.h"
#include "platform/Random.h"
#include "platform/SettingsStore.h"
#include "platform/TextRules.h"
#include "platform/Trash.h"
#include "platform/UserFolders.h"
#include "recipe/Adjustments.h"
#include "recipe/RecipeActions.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

namespace kelvaro {

// What the store works with; everything outlives it. Null where a program has no use for it.
struct LibraryServices {
    FileSystem& files;
    SettingsStore& settings;
    const UserFolders& folders;
    Clock& clock;
    MainThread& main;
    RandomSource& random;
    PropertyReader& properties;
    const TextRules& texts;
    const LocalCalendar& calendar;
    Trash& trash;
    FolderWatcher* watcher = nullptr;
    DriveTable* drives = nullptr;
    MetaCache* metaCache = nullptr;
    RenderSessions* sessions = nullptr;
};

struct InfoRequest {
    PhotoUrl url;
    std::uint64_t token = 0; // of the latest request; a result with another one is dropped
    bool operator==(const InfoRequest&) const = default;
};

struct ExportRequest {
    std::vector<PhotoUrl> photos; // in the grid's order
    std::uint64_t token = 0;      // tells two equal requests apart
    bool operator==(const ExportRequest&) const = default;
};

// A short message in the window. Each has a number of its own, so that the same words show again.
struct Notice {
    std::string text;
    std::uint64_t number = 0;
    bool operator==(const Notice&) const = default;
};

enum class AddFolderResult { added, alreadyListed, notAFolder };

// How moving to the Trash or deleting went. Photos that had vanished already count as done.
struct RemovalResult {
    std::vector<PhotoUrl> removed, refused;
};

class LibraryStore {
public:
    // Reads the settings and begins to scan every stored folder.
    explicit LibraryStore(const LibraryServices& services);
    // Waits for writes that have begun and keeps in the journal what could not be written.
    ~LibraryStore();
    LibraryStore(const LibraryStore&) = delete;
    LibraryStore& operator=(const LibraryStore&) = delete;

    // After any change of any field below.
    const Changes& changes() const;

    // --- Folders ---
    using FolderSet = std::set<FolderUrl>;
    const Published<std::vector<FolderUrl>>& folders() const; // as they were added
    const Published<FolderSet>& missingFolders() const;       // could not be listed
    const Published<FolderSet>& indexingFolders() const;      // scan queued or running
    const Published<bool>& isReading() const; // folders, or metadata of photos that are listed
    const Published<FolderSet>& unsavedFavorites() const; // favourites not written yet
    const Published<FolderSet>& unsavedEdits() const;     // edits not written yet
    // The photos of a folder, in the order of their file names' bytes; null when none were found
    // yet. The block never changes; a later scan may put another in its place.
    FolderPhotos photos(const FolderUrl& folder) const;
    std::size_t photoCount() const; // in all listed folders

    // A folder that is listed already, under whatever path, is not added twice.
    AddFolderResult addFolder(const std::filesystem::path& folder);
    void removeFolder(const FolderUrl& folder);
    void rescanFolder(const FolderUrl& folder);
    void rescanAll();

    // --- Photos ---
    // Bumped whenever the photos or their recipes change, so that caches compare cheaply.
    const Published<std::uint64_t>& version() const;
    // Null for a photo that is not in the library (any more). Valid until the next turn of the main
    // thread; copy it to keep it.
    const Photo* photo(const PhotoUrl& url) const;
    // The recipe and the latest edit's date of an edited photo.
    const Adjustments* edit(const PhotoUrl& url) const; // valid like `photo`
    std::optional<FileTime> editDate(const PhotoUrl& url) const;
    std::vector<PhotoUrl> edits() const; // the edited photos, in no particular order
    std::size_t editedCount() const;
    bool isFavorite(const PhotoUrl& url) const;
    std::vector<PhotoUrl> favorites() const; // in no particular order
    std::size_t favoriteCount() const;
    const Published<std::uint64_t>& favoriteRevision() const; // bumped by every change of them
    // Metadata read so far; null until it has been read.
    SharedMeta meta(const PhotoUrl& url) const;
    const Published<std::uint64_t>& metaRevision() const;
    // Calls back once, on a thread of the store's own, with every photo that is not in a missing
    // folder, as the library is after all changes so far. What is passed ends with the call.
    void inspect(std::function<void(const std::vector<KnownPhoto>&)> read) const;
    // Why edits or favourites of a folder could not be read; empty when all was.
    std::vector<std::string> readProblems(const FolderUrl& folder) const;

    // --- What the grid shows ---
    // Photos in scope that pass search and filters, sorted, with groups. Never
    // null; photos in it stay valid for as long as the block is held.
    const Published<std::shared_ptr<const LibraryView>>& view() const;
    // Cameras, lenses, focal lengths and kinds of the photos in scope.
    const Published<FilterOptions>& filterOptions() const;
    const Published<Scope>& scope() const;
    // Null while every photo in scope is shown. Another scope leaves it.
    const Published<SharedRestriction>& restriction() const;
    const Published<PhotoFilter>& filter() const;
    const Published<std::string>& searchText() const;
    const Published<bool>& searchFocus() const; // the search field should take the keyboard
    const Published<SortOrder>& sortOrder() const;
    const Published<double>& thumbSize() const; // points; below a limit groups are months
    // The words in place of an empty grid; none while it shows photos or what it would show is
    // still being looked for.
    std::optional<EmptyState> emptyState() const;

    void setScope(Scope scope);
    // Of the whole library these photos alone, without search and filter; they can be searched and
    // filtered then.
    void showOnly(SharedRestriction restriction);
    void leaveRestriction();
    void setFilter(PhotoFilter filter);
    void setSearchText(std::string text);
    void setSearchFocus(bool wanted);
    void setSortOrder(SortOrder order);
    void setThumbSize(double points);

    // --- Selection, navigation, requests ---
    const Published<PhotoSet>& selection() const;
    const Published<std::optional<PhotoUrl>>& scrollTarget() const;
    const Published<std::optional<InfoRequest>>& infoRequest() const;
    // The answer to the current request; none while it is being read, and a `PhotoInfo` without
    // values when the photo can't be read.
    const Published<std::optional<PhotoInfo>>& info() const;
    const Published<std::optional<ExportRequest>>& exportRequest() const;

    void setSelection(PhotoSet selection); // prepares the first photo for the editor
    void selectAll();                      // all visible photos
    void setScrollTarget(std::optional<PhotoUrl> target);
    void requestInfo(std::optional<PhotoUrl> photo); // none closes the panel
    void requestExport(); // of the open photo or the selection; nothing when there is none
    void endExportRequest();

    // --- Editing ---
    const Published<std::optional<PhotoUrl>>& openPhoto() const; // in the editor
    bool isEditing() const { return openPhoto().get().has_value(); }
    const Published<std::optional<Adjustments>>& clipboard() const;
    const Published<std::uint64_t>& pasteCount() const; // of pastes in this session

    // Does nothing for a photo that is not in the library.
    void openEditor(const PhotoUrl& photo);
    // The photo `step` places further in the grid than the open one (negative: back).
    std::optional<PhotoUrl> neighbour(int step) const;
    void openNeighbour(int step); // nothing at the ends
    void closeEditor();
    // Takes effect at once, is written soon, and waits where the drive is absent.
    void setAdjustments(const PhotoUrl& photo, const Adjustments& adjustments);
    void revertToOriginal(const std::vector<PhotoUrl>& photos);
    void copyAdjustments(const PhotoUrl& photo);
    void setClipboard(const Adjustments& adjustments); // without a notice
    void pasteAdjustments(const std::vector<PhotoUrl>& photos,
                          PasteGeometry geometry = PasteGeometry::keepOwn);
    void notePaste(); // the editor has pasted into its photo
    void setFavorite(const std::vector<PhotoUrl>& photos, bool favorite);
    // All become favourites, unless all are.
    void toggleFavorite(const std::vector<PhotoUrl>& photos);
    // The photos that commands act on: the open one, else the selection in the grid's order.
    std::vector<PhotoUrl> targets() const;

    // --- Trash; the questions' words are texts::trashQuestion and texts::deleteQuestion ---
    using Removed = std::function<void(const RemovalResult&)>;
    // Both call back on the main thread once all photos were tried. Recipes and favourites stay on
    // the disk, so that a photo that is put back has them again.
    void moveToTrash(std::vector<PhotoUrl> photos, Removed done);
    // For good. Those that can't be removed are told in `errorMessage` as well.
    void deleteImmediately(std::vector<PhotoUrl> photos, Removed done);

    // --- Window ---
    const Published<bool>& showsFilmstrip() const;
    const Published<AppearanceMode>& appearance() const;
    const Published<std::optional<Notice>>& notice() const;
    const Published<std::optional<std::string>>& errorMessage() const;

    void setShowsFilmstrip(bool shows);
    void setAppearance(AppearanceMode mode);
    void showNotice(std::string text);
    void clearNotice();
    void showError(std::string text);
    void clearError();
    // What to ask before quitting; none when all is written.
    std::optional<texts::Alert> quitCheck() const;
    // Drops what could not be written, the journal included: "Quit Without Saving".
    void discardUnsaved();
    // Null, or whoever holds edits of its own; null again before that ends.
    void setHeldEdits(HeldEdits* held);

    // --- Waiting, for programs without a window and for tests ---
    // No scan, read, write or query is queued or running. Posted results may still be waiting for
    // the main thread's next turn.
    bool isIdle() const;
    // All writes so far have ended. Blocks.
    void waitForWrites();

    // Runs `job` on the queue that writes edits and favourites, after the writes so far.
    void afterWrites(std::function<void()> job);

    // --- View states: each is read again after changes and published only when it differs ---
    const LibrarySlice<RootState>& rootState() const;
    const LibrarySlice<CommandState>& commandState() const;
    const LibrarySlice<SidebarState>& sidebarState() const;
    const LibrarySlice<GridToolsState>& gridToolsState() const;
    const LibrarySlice<SearchState>& searchState() const;
    const LibrarySlice<FilterState>& filterState() const;
    const LibrarySlice<std::string>& gridSubtitle() const;
    const LibrarySlice<EditorTools>& editorTools() const;

private:
    struct Parts;
    std::unique_ptr<Parts> parts_;
};

} // namespace kelvaro
