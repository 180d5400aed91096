// Edits and favourites that could not be written beside their photos, on the local disk, so that
// they survive the program. One file for all programs of this user; each change of it reads, merges
// and replaces under a lock. Calls block, on any thread but the main one.
#pragma once

#include "library/Photo.h"
#include "platform/Random.h"
#include "recipe/Sidecar.h"

#include <map>
#include <set>

namespace kelvaro {

struct Unsaved {
    std::map<PhotoUrl, StoredEdit> edits; // unedited records too: they remove a sidecar
    std::map<PhotoUrl, bool> favorites;
    bool isEmpty() const { return edits.empty() && favorites.empty(); }
};

class UnsavedJournal {
public:
    static constexpr std::string_view fileName = "Unsaved.json";

    // `folder` is our own support folder and is made when it is missing.
    UnsavedJournal(FileSystem& files, RandomSource& random, std::filesystem::path folder)
        : files_(files), random_(random), folder_(std::move(folder)) {}

    // Entries that can't be read are left out, and stay in the file.
    Result<Unsaved> read();
    // Puts `put` in the place of what is known of its photos, and takes out what `done` has: an
    // edit unless the file's one is later, a favourite when it is the same.
    Result<void> change(const Unsaved& put, const Unsaved& done);

private:
    Result<json::Object> document();

    FileSystem& files_;
    RandomSource& random_;
    const std::filesystem::path folder_;
};

} // namespace kelvaro
