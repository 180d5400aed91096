// What the store knows of each folder: photos, metadata, and edits and favourites as they stand
// with the user's latest changes, whether those are on the disk yet or not. Main thread; taking
// over a scan costs the same however large the folder is, but for changes that wait to be written.
#pragma once

#include "library/FolderScan.h"
#include "library/SidecarWriter.h"

#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace kelvaro {

// A change of the user's that a scan may not have seen.
template<class T>
struct Override {
    T value{};
    std::uint64_t revision = 0; // as the writer counts
    std::uint64_t written = 0;  // the number of the write that brought it to the disk; 0: none yet
};

struct FolderState {
    FolderPhotos photos; // null until the first scan has ended
    std::vector<SharedMeta> metas;
    std::unordered_map<std::string, SharedEdit> edits; // by file name, of listed photos
    std::unordered_set<std::string> favorites;
    std::map<std::string, Override<SharedEdit>> editOverrides; // a null edit: unedited
    std::map<std::string, Override<bool>> favoriteOverrides;
    std::vector<std::string> problems;
    std::optional<Drive> drive;
};

// Whose marks are others after a scan was taken over.
struct MergeEffects {
    bool photosChanged = false, marksChanged = false;
    std::vector<std::string> editNames, favoriteNames; // apart from what `marksChanged` covers
};

class FolderStates {
public:
    FolderState& add(const FolderUrl& folder) { return states_[folder]; }
    // Gives the state away, so that a large one can be let go elsewhere.
    FolderState remove(const FolderUrl& folder);
    FolderState* find(std::string_view folder);
    const FolderState* find(std::string_view folder) const;
    const std::unordered_map<FolderUrl, FolderState>& all() const { return states_; }

    // `old` gets what was replaced.
    MergeEffects merge(ScanResult&& result, FolderState& old);
    // A write has ended and brought these revisions to the disk.
    void written(const WriteOutcome& outcome);

    // Sets what is true of a listed photo; null or unedited: no edit.
    void setEdit(FolderState& state, const std::string& name, SharedEdit edit,
                 std::uint64_t revision);
    void setFavorite(FolderState& state, const std::string& name, bool favorite,
                     std::uint64_t revision);

    const Photo* photo(std::string_view url) const;
    SharedEdit edit(std::string_view url) const;
    bool isFavorite(std::string_view url) const;
    SharedMeta meta(std::string_view url) const;

private:
    std::unordered_map<FolderUrl, FolderState> states_;
};

} // namespace kelvaro
