// Writes edits and favourites beside their photos, in the background and in order, and keeps what
// can't be written: in memory, in the journal, and until it can be. Called on the main thread.
#pragma once

#include "base/Locked.h"
#include "base/MainPoster.h"
#include "base/SerialQueue.h"
#include "library/FavoritesFile.h"
#include "library/UnsavedJournal.h"

#include <atomic>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kelvaro {

// How one attempt to write what was pending of a folder went.
struct WriteOutcome {
    FolderUrl folder;
    std::uint64_t number = 0; // counts writes that have ended, this one included
    // By file name, with the revision that is on the disk now. The file of an edit may hold a later
    // edit of another program instead, where ours had waited.
    std::map<std::string, std::uint64_t> edits, favorites;
    std::optional<Failure> editsFailure, favoritesFailure;
    // Of a photo whose edit had not failed before, and of a change of favourites that had not.
    bool isNewEditsFailure = false, isNewFavoritesFailure = false;
    bool editsPending = false, favoritesPending = false; // something is left to be written
    bool wasRetry = false; // of things that had failed before, without a new change
};

// What the journal had, with the revisions under which it is pending now.
struct FoundUnsaved {
    std::map<PhotoUrl, std::pair<StoredEdit, std::uint64_t>> edits;
    std::map<PhotoUrl, std::pair<bool, std::uint64_t>> favorites;
};

class SidecarWriter {
public:
    // All outlive the writer. `ended` is called on the main thread after each attempt.
    struct Tools {
        FileSystem& files;
        RandomSource& random;
        MainThread& main;
        std::filesystem::path support; // the folder of the journal
        std::atomic<std::uint64_t>& writes;
        std::function<void(const WriteOutcome&)> ended;
        std::function<void(const FoundUnsaved&)> found; // on the main thread, at most once
    };

    // Reads the journal; what it has is pending from the start.
    explicit SidecarWriter(Tools tools);
    ~SidecarWriter();

    // Each returns the revision that the outcome will name.
    std::uint64_t saveEdit(const PhotoUrl& photo, const Adjustments& adjustments, double editedAt);
    std::uint64_t setFavorites(const FolderUrl& folder, const std::vector<std::string>& names,
                               bool favorite);
    // Tries again what is pending of a folder; nothing when nothing is.
    void retry(const FolderUrl& folder);
    // Runs after the writes so far, on their queue, one after another.
    void post(std::function<void()> job) { queue_.post(std::move(job)); }
    // Forgets what is pending, in the journal too.
    void discard();
    bool isIdle() const { return running_ == 0; }
    void waitUntilIdle() { queue_.waitUntilIdle(); }

private:
    struct PendingEdit {
        StoredEdit edit;
        std::uint64_t revision = 0;
        bool waited = false; // an attempt has failed, now or in an earlier run of the program
        bool isTold = false; // the photo's edit has failed since the program began
    };
    struct PendingFavorite {
        bool favorite = false;
        std::uint64_t revision = 0;
        bool isTold = false; // this change has failed
    };
    struct Pending {
        std::map<std::string, PendingEdit> edits;
        std::map<std::string, PendingFavorite> favorites;
        bool isQueued = false; // an attempt has been posted and has not begun
    };

    void adopt();
    void takeFound(const Unsaved& left);
    void queueAttempt(const FolderUrl& folder, bool isRetry);
    void attempt(const FolderUrl& folder, bool isRetry);
    Result<void> writeEdit(const PhotoUrl& photo, const PendingEdit& pending);
    void writeEdits(const FolderUrl& folder, const Pending& pending, WriteOutcome& outcome);
    void writeFavorites(const FolderUrl& folder, const Pending& pending, WriteOutcome& outcome);
    void settle(const Pending& tried, WriteOutcome& outcome);
    void keepJournal(const FolderUrl& folder, const Pending& tried, const WriteOutcome& outcome);
    bool isThere(const PhotoUrl& photo);
    bool isMounted(const PhotoUrl& photo);

    Tools tools_;
    MainPoster poster_;
    UnsavedJournal journal_;
    Unsaved journaled_; // what the journal has of ours; used on the queue alone
    Locked<std::map<FolderUrl, Pending>> pending_;
    std::uint64_t revision_ = 0; // main thread
    std::atomic<int> running_{0};
    SerialQueue queue_{"kelvaro.sidecars"}; // last: its jobs use all of the above
};

} // namespace kelvaro
