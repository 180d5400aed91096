// Which photos an export is about.
#pragma once

#include "cli/CommandLine.h"
#include "export/ExportNames.h"

namespace kelvaro {

struct ExportPhotos {
    std::vector<std::filesystem::path> photos;
    std::vector<Failure> failures; // of paths that are neither photos nor folders of photos
};

// Folders are taken as the photos directly inside, by name, without hidden files. A path that leads
// to a photo already listed is left out.
ExportPhotos photosAt(const std::vector<std::filesystem::path>& paths, FileSystem& files);

// One part of the photos, in their order. Photos whose names differ only in case or extension stay
// together, because they ask for the same output name.
std::vector<std::filesystem::path> shardOf(const std::vector<std::filesystem::path>& photos,
                                           Shard shard);

// The given photos and all that lie beside them: an export never replaces those.
ProtectedPaths protectedPhotos(const std::vector<std::filesystem::path>& photos, FileSystem& files);

} // namespace kelvaro
