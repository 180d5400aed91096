// The favourites of one folder: a JSON array of file names beside the folder's edits. Holds nothing
// between calls; every call may block, any thread. Two programs that change it at once lose
// nothing: a change reads, merges and replaces the file under a lock.
#pragma once

#include "library/Photo.h"
#include "platform/FileSystem.h"

#include <map>
#include <set>
#include <string>

namespace kelvaro {

class FavoritesFile {
public:
    using Names = std::set<std::string>;

    explicit FavoritesFile(FileSystem& files) : files_(files) {}

    // None when the folder is there and has no such file. Other content than an array of texts is
    // `malformed`, an absent folder `notFound`.
    Result<Names> read(const FolderUrl& folder);

    // Adds (true) and removes names and returns all that the file now has. Without any the file is
    // removed. A file that can't be read is never replaced.
    Result<Names> change(const FolderUrl& folder, const std::map<std::string, bool>& changes);

private:
    Result<Names> parsed(const std::filesystem::path& file);

    FileSystem& files_;
};

} // namespace kelvaro
