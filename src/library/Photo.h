// One photo file of the library, identified by its location, and what the listing of its folder
// tells of it. Plain values; locations are absolute paths as byte strings, not necessarily UTF-8.
#pragma once

#include "platform/FileSystem.h"
#include "platform/PhotoKinds.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace kelvaro {

using PhotoUrl = std::string;
using FolderUrl = std::string; // without a slash at its end, but for the root

// The part before the last slash; views into `url`.
inline std::string_view folderOf(std::string_view url) {
    const auto slash = url.rfind('/');
    if (slash == std::string_view::npos) return {};
    return slash == 0 ? url.substr(0, 1) : url.substr(0, slash);
}
// The part after the last slash.
inline std::string_view fileNameOf(std::string_view url) {
    return url.substr(url.rfind('/') + 1);
}
// Without the dot; empty when there is none. A name that begins with its only dot has none.
inline std::string_view extensionOf(std::string_view url) {
    const std::string_view name = fileNameOf(url);
    const auto dot = name.rfind('.');
    return dot == std::string_view::npos || dot == 0 ? std::string_view() : name.substr(dot + 1);
}

// The file of that name in the folder.
inline PhotoUrl photoUrl(std::string_view folder, std::string_view fileName) {
    PhotoUrl url;
    url.reserve(folder.size() + 1 + fileName.size());
    url.append(folder);
    if (!folder.ends_with('/')) url.push_back('/');
    return url.append(fileName);
}

struct Photo {
    PhotoUrl url;
    std::string name; // the file name without its extension
    bool isRaw = false;
    std::int64_t fileSize = 0; // bytes
    FileTime modified;
    FileTime created;

    bool operator==(const Photo&) const = default;
};

// The photo that a listing's entry stands for; `status` times and size are taken as they are.
inline Photo makePhoto(std::string_view folder, std::string_view fileName, PhotoKind kind,
                       std::int64_t fileSize, FileTime modified, FileTime created) {
    Photo photo;
    photo.url = photoUrl(folder, fileName);
    const std::string_view extension = extensionOf(fileName);
    photo.name = fileName.substr(0, fileName.size() - extension.size() - !extension.empty());
    photo.isRaw = kind == PhotoKind::raw;
    photo.fileSize = fileSize;
    photo.modified = modified;
    photo.created = created;
    return photo;
}

} // namespace kelvaro

template<>
struct std::hash<kelvaro::Photo> {
    std::size_t operator()(const kelvaro::Photo& photo) const noexcept {
        std::size_t seed = std::hash<std::string>{}(photo.url);
        const auto fold = [&](std::size_t next) {
            seed = (seed ^ next) * 0x9E3779B97F4A7C15u + (seed >> 7);
        };
        fold(std::hash<std::string>{}(photo.name));
        fold(photo.isRaw);
        fold(static_cast<std::size_t>(photo.fileSize));
        fold(static_cast<std::size_t>(photo.modified.nanoseconds));
        fold(static_cast<std::size_t>(photo.created.nanoseconds));
        return seed;
    }
};
