// One look at one folder: its photos, edits, favourites and remembered metadata. A scan is a
// function of the disk and of what the scan before found, which spares it most of the work. Runs on
// any thread but the main one; what it returns is handed over there.
#pragma once

#include "library/FavoritesFile.h"
#include "library/MetaReader.h"
#include "library/PhotoQuery.h"
#include "platform/DriveTable.h"
#include "recipe/Sidecar.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace kelvaro {

using SharedEdit = std::shared_ptr<const StoredEdit>;

// None where the sidecar does not tell: its date is 0.
std::optional<FileTime> editDateOf(const StoredEdit& edit);

// What a scan keeps for the next one of the same folder.
struct FolderMemory {
    struct Entry {
        FileStatus stamp; // an entry with the same stamp is not read again
        SharedEdit edit;  // null where it can't be read
        bool operator==(const Entry&) const = default;
    };
    FolderPhotos photos;
    std::map<std::string, Entry> sidecars; // by the photo's file name
    bool editsReadable = true;             // the sidecar directory could be listed
    std::optional<FileStatus> favoritesStamp;
    FavoritesFile::Names favorites;
    bool favoritesReadable = true;
    std::optional<Drive> drive; // that the folder was found on
};

struct ScanRequest {
    FolderUrl folder;
    std::shared_ptr<const FolderMemory> memory; // of the scan before; may be null
    bool photos = true;                         // false: edits and favourites only
};

struct ScanResult {
    FolderUrl folder;
    // Writes that ended with this number or a lower one are part of what was read.
    std::uint64_t writesSeen = 0;
    bool isMissing = false; // nothing of the below then
    std::shared_ptr<const FolderMemory> memory;
    bool photosChanged = false, marksChanged = false;
    // Of photos in the listing alone.
    std::unordered_map<std::string, SharedEdit> edits; // by file name
    std::unordered_set<std::string> favorites;
    std::shared_ptr<const FolderMarks> marks; // the same once more, for another thread
    // Parallel to the photos, null where not remembered; empty when the photos are as before.
    std::vector<SharedMeta> metas;
    // Of files that are gone while their edit or favourite is still there; like `metas`.
    PhotoMetas lost;
    std::vector<std::string> problems; // one line each, for people
};

class FolderScan {
public:
    // All outlive the scanner; `drives` may be null.
    struct Tools {
        FileSystem& files;
        RandomSource& random;
        const TextRules& texts;
        MetaReader& metas;
        DriveTable* drives;
        const std::atomic<std::uint64_t>& writes; // counts the writes that have ended
    };

    explicit FolderScan(const Tools& tools) : tools_(tools) {}
    ScanResult run(const ScanRequest& request) const;

private:
    bool hadPhotosElsewhere(const ScanRequest& request, const FolderMemory& memory) const;
    bool readPhotos(const ScanRequest& request, FolderMemory& memory) const;
    void readEdits(const ScanRequest& request, FolderMemory& memory) const;
    void readFavorites(const ScanRequest& request, FolderMemory& memory) const;
    void readMetas(const FolderMemory& memory, ScanResult& result) const;

    Tools tools_;
};

} // namespace kelvaro
