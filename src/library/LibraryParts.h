// The inside of the library store: its fields and the workers that it hands things to. Seen by the
// store's own sources alone; main thread.
#pragma once

#include "base/MainPoster.h"
#include "library/FolderJobs.h"
#include "library/FolderStates.h"
#include "library/LibraryStore.h"
#include "library/MetaReader.h"
#include "library/MovedEdits.h"
#include "library/ViewQueue.h"

#include <atomic>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kelvaro {

struct LibraryStore::Parts {
    static constexpr double defaultThumbSize = 180, monthGroupsBelow = 96; // points

    explicit Parts(const LibraryServices& services);
    ~Parts();

    // --- LibraryScanning.cpp ---
    void start();
    bool isListed(const FolderUrl& folder) const;
    void requestScan(const FolderUrl& folder, bool photosToo = true);
    void runScan(const FolderUrl& folder); // on a thread of `scans`
    void takeScans();
    void takeScan(ScanResult result);
    void takeListing(ScanResult result);
    void retryHeld(const FolderUrl& folder);
    void takeMissing(const FolderUrl& folder);
    void reportProblems(const FolderUrl& folder, const std::vector<std::string>& problems);
    void updateStreaming();
    void folderChanged(const std::filesystem::path& changed);
    void drivesChanged();
    void forget(const FolderUrl& folder);
    void requestMetas(const FolderUrl& folder);
    void runMetas(const FolderUrl& folder); // on the thread of `metaJobs`
    void takeMetas(const FolderUrl& folder, const PhotoMetas& metas);
    void lookForMoved();

    // --- LibraryEditing.cpp ---
    Adjustments editOf(const PhotoUrl& photo) const; // the unedited record where there is none
    bool changeEdit(const PhotoUrl& photo, const Adjustments& adjustments);
    void changeFavorites(const std::vector<PhotoUrl>& photos, bool favorite);
    void takeOutcome(const WriteOutcome& outcome);
    void takeJournal(const FoundUnsaved& found);
    using Remove = std::function<Result<void>(const PhotoUrl&)>; // one file; any thread
    void removeFiles(std::vector<PhotoUrl> photos, Remove remove, Removed done);
    void takeRemoval(const RemovalResult& result);

    // --- LibraryShowing.cpp ---
    LibraryQuery query() const;
    void show();
    void select(PhotoSet photos);
    void watchDay();
    void takeView(ViewAnswer answer);
    void showMarks(const FolderUrl& folder, const MergeEffects& effects);
    std::optional<std::size_t> positionOf(const PhotoUrl& photo) const; // in the view
    FileTime now() const;
    void bumpVersion() { version.set(version.get() + 1); }

    template<class T>
    void connect(Published<T>& field) {
        connections.push_back(field.observe([this] { changes.notify(); }));
    }

    LibraryServices services;
    MainPoster poster;
    Changes changes;
    std::vector<Subscription> connections; // of the fields below to `changes`

    Published<std::vector<FolderUrl>> folders;
    Published<FolderSet> missingFolders, indexingFolders, unsavedFavorites, unsavedEdits;
    Published<std::uint64_t> version, favoriteRevision, metaRevision;
    Published<std::shared_ptr<const LibraryView>> view{std::make_shared<const LibraryView>()};
    Published<FilterOptions> filterOptions;
    Published<Scope> scope;
    Published<SharedRestriction> restriction;
    Published<PhotoFilter> filter;
    Published<std::string> searchText;
    Published<bool> searchFocus{false}, isReading{false};
    Published<SortOrder> sortOrder;
    Published<double> thumbSize{defaultThumbSize};
    Published<PhotoSet> selection;
    Published<std::optional<PhotoUrl>> scrollTarget, openPhoto;
    Published<std::optional<InfoRequest>> infoRequest;
    Published<std::optional<PhotoInfo>> info;
    Published<std::optional<ExportRequest>> exportRequest;
    Published<std::optional<Adjustments>> clipboard;
    Published<std::uint64_t> pasteCount{0};
    Published<bool> showsFilmstrip{true};
    Published<AppearanceMode> appearance{AppearanceMode::system};
    Published<std::optional<Notice>> notice;
    Published<std::optional<std::string>> errorMessage;

    FolderStates states;
    HeldEdits* heldEdits = nullptr; // of the editor; may be null
    std::uint64_t infoToken = 0, exportToken = 0, noticeNumber = 0;
    std::optional<std::int64_t> shownDay;
    std::uint64_t viewQuestion = 0;                         // the number of the latest
    std::map<FolderUrl, std::vector<std::string>> reported; // problems that were told already
    std::vector<std::string> toReport;                      // once all scans have ended
    mutable std::size_t positionHint = 0;
    FolderSet watchedAncestors; // of missing folders
    FolderSet readingMetas;

    // What scans share between their threads.
    struct ScanNote {
        std::uint64_t generation = 0; // another one after the folder was removed
        std::shared_ptr<const FolderMemory> memory;
        bool photosToo = true;   // of the next scan
        std::uint64_t asked = 0; // counts the scans asked for
    };
    struct ScanArrival {
        ScanResult result;
        std::uint64_t generation = 0, asked = 0; // as the note had them when the scan began
    };
    struct MetaNote {
        FolderPhotos photos;
        std::vector<SharedMeta> known; // parallel; null is to be read
        std::shared_ptr<Cancellation> cancellation;
    };
    std::uint64_t generation = 0;
    Locked<std::map<FolderUrl, ScanNote>> scanNotes;
    Locked<std::deque<ScanArrival>> arrivals; // results that the main thread has not taken over
    Locked<std::map<FolderUrl, MetaNote>> metaNotes;
    std::atomic<std::size_t> toScan{0};  // as many folders as indexingFolders
    std::atomic<bool> isFirstTurn{true}; // no arrivals have been waited for
    std::atomic<std::uint64_t> writes{0};
    std::atomic<int> running{0}; // trash and info jobs on their way
    MetaReader metaReader;
    MovedEdits moved;
    FolderScan scan;

    ViewQueue views;
    SidecarWriter writer;
    SerialQueue infoQueue{"kelvaro.photo-info", SerialQueue::AtEnd::drop};
    FolderJobs metaJobs;
    FolderJobs scans; // last but the slices: its jobs use all of the above

    struct Slices {
        Slices(const LibraryStore& lib, const Changes& changes, MainThread& main);
        LibrarySlice<RootState> root;
        LibrarySlice<CommandState> command;
        LibrarySlice<SidebarState> sidebar;
        LibrarySlice<GridToolsState> gridTools;
        LibrarySlice<SearchState> search;
        LibrarySlice<FilterState> filter;
        LibrarySlice<std::string> subtitle;
        LibrarySlice<EditorTools> editor;
    };
    std::optional<Slices> slices; // made once the store can be read
};

} // namespace kelvaro
