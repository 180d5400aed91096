// Reads the metadata of photo files on several threads and remembers it in the cache. All functions
// block, on any thread but the main one.
#pragma once

#include "base/Cancellation.h"
#include "library/FolderListing.h"
#include "library/PhotoMeta.h"
#include "platform/LocalCalendar.h"
#include "platform/MetaCache.h"
#include "platform/PhotoProperties.h"

#include <functional>
#include <span>
#include <utility>
#include <vector>

namespace kelvaro {

// A file's record; null when the file could not be read, which is not remembered.
using PhotoMetas = std::vector<std::pair<PhotoUrl, SharedMeta>>;

class MetaReader {
public:
    struct Plan {
        int threads = 2;
        std::size_t batch = 64; // photos per delivery
    };

    // All must outlive the reader; `cache` may be null.
    MetaReader(PropertyReader& properties, MetaCache* cache, const LocalCalendar& calendar)
        : properties_(properties), cache_(cache), calendar_(calendar) {}

    // What the cache knows of a folder: of its photos, as far as it still holds and in their order,
    // and of files that are no longer there, until they are forgotten.
    struct Remembered {
        PhotoMetas photos, gone;
    };
    Remembered remembered(const FolderListing& listing);
    void forget(const FolderUrl& folder, std::span<const std::string> fileNames);
    // Where the drive was mounted that the folder's photos were last found on; empty when unknown.
    std::string mountPointOf(const FolderUrl& folder);
    void rememberMountPoint(const FolderUrl& folder, const std::string& mountPoint);

    // Reads the files of one folder. Each batch is stored in the cache and handed over, one call at
    // a time, on whichever thread finished it. A cancelled run delivers what it has read.
    void read(const FolderUrl& folder, std::span<const Photo> photos, const Plan& plan,
              const Cancellation& cancellation,
              const std::function<void(const PhotoMetas&)>& onBatch);

    // One file, without the cache; null when it cannot be read.
    SharedMeta readOne(const Photo& photo);

private:
    void remember(const FolderUrl& folder, const PhotoMetas& batch);

    PropertyReader& properties_;
    MetaCache* cache_;
    const LocalCalendar& calendar_;
};

} // namespace kelvaro
