#include "cli/ExportPhotos.h"

#include "platform/PhotoKinds.h"

#include <algorithm>
#include <fmt/format.h>
#include <map>

namespace kelvaro {

namespace {

Result<std::vector<std::filesystem::path>> photosIn(const std::filesystem::path& folder,
                                                    FileSystem& files) {
    auto entries = files.list(folder);
    if (!entries) return fail(std::move(entries).error());
    std::vector<std::filesystem::path> photos;
    for (const FolderEntry& entry : *entries) {
        const bool isHidden = entry.name.starts_with('.');
        if (!isHidden && entry.kind == FileStatus::Kind::file && photoKind(entry.name))
            photos.push_back(folder / entry.name);
    }
    std::sort(photos.begin(), photos.end());
    return photos;
}

Result<std::vector<std::filesystem::path>> photosOf(const std::filesystem::path& path,
                                                    FileSystem& files) {
    const auto status = files.status(path);
    if (!status) return fail(status.error());
    if (status->kind == FileStatus::Kind::folder) return photosIn(path, files);
    if (!photoKind(path))
        return fail(FailureKind::unsupported, fmt::format("“{}” isn't a photo that Kelvaro knows.",
                                                          path.filename().string()));
    return std::vector{path};
}

} // namespace

ExportPhotos photosAt(const std::vector<std::filesystem::path>& paths, FileSystem& files) {
    ExportPhotos found;
    std::set<std::filesystem::path> known;
    for (const auto& path : paths) {
        auto photos = photosOf(path, files);
        if (!photos) {
            found.failures.push_back(photos.error());
            continue;
        }
        for (auto& photo : *photos)
            if (known.insert(resolvedPath(photo)).second) found.photos.push_back(std::move(photo));
    }
    return found;
}

std::vector<std::filesystem::path> shardOf(const std::vector<std::filesystem::path>& photos,
                                           Shard shard) {
    std::map<std::string, std::size_t> partOfName;
    std::vector<std::filesystem::path> part;
    for (const auto& photo : photos) {
        const auto known =
            partOfName.try_emplace(nameKey(photo.stem().string()), partOfName.size()).first;
        if (known->second % shard.count == shard.number - 1) part.push_back(photo);
    }
    return part;
}

ProtectedPaths protectedPhotos(const std::vector<std::filesystem::path>& photos,
                               FileSystem& files) {
    ProtectedPaths paths;
    std::set<std::filesystem::path> folders;
    for (const auto& photo : photos) {
        paths.insert(resolvedPath(photo));
        folders.insert(photo.has_parent_path() ? photo.parent_path() : ".");
    }
    for (const auto& folder : folders) {
        const auto beside = photosIn(folder, files);
        if (!beside) continue;
        for (const auto& photo : *beside)
            paths.insert(resolvedPath(photo));
    }
    return paths;
}

} // namespace kelvaro
