// Edits and favourites of photos that other programs moved or renamed within the library: found by
// what the lost file recorded, copied beside the file that is certainly the same photo, and left
// where they were. Thread-safe; `bring` blocks on the disk.
#pragma once

#include "base/Locked.h"
#include "library/MetaReader.h"
#include "library/MovedPhotos.h"
#include "platform/FileSystem.h"

#include <map>

namespace kelvaro {

class MovedEdits {
public:
    // Both outlive this.
    MovedEdits(FileSystem& files, MetaReader& metas) : files_(files), metas_(metas) {}

    // What a look at a folder found: its photos, and those whose files are gone while their edit or
    // favourite is still there, in the place of what was told of the folder before.
    void setFolder(const FolderListing& photos, PhotoMetas lost);
    // Photos that were never seen before, and the monotonic time. Only they may be a lost one's new
    // place, and only for a while: a copy that has been there for long is a photo of its own.
    static constexpr double newForSeconds = 600; // moving between disks copies first
    void addNew(const PhotoMetas& photos, double nowSeconds);
    void forget(const FolderUrl& folder);

    bool isPossible(); // something is lost and something is new
    // Copies what belongs to moved photos; a photo with an edit of its own keeps that. Returns the
    // photos that got something, each once.
    std::vector<PhotoUrl> bring(double nowSeconds);

private:
    struct New {
        SharedMeta meta;
        double seenSeconds = 0;
    };
    struct Known {
        std::map<FolderUrl, PhotoMetas> lost;
        std::map<PhotoUrl, New> found;
    };

    // Whether there was something to copy; a failure may pass.
    Result<bool> bring(const MovedPhoto& moved);
    Result<bool> copyEdit(const MovedPhoto& moved);
    Result<bool> copyFavorite(const MovedPhoto& moved);

    FileSystem& files_;
    MetaReader& metas_;
    Locked<Known> known_;
};

} // namespace kelvaro
