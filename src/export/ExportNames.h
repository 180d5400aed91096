// The names of the files of one export run: what one photo took no other gets, and nothing is
// replaced that must stay. Used by one thread at a time; looks at the disk.
#pragma once

#include "platform/FileSystem.h"

#include <filesystem>
#include <map>
#include <set>
#include <string>

namespace kelvaro {

// Resolved paths of photos that must never be replaced.
using ProtectedPaths = std::set<std::filesystem::path>;

// The path standardised and with its links resolved, as far as it exists.
std::filesystem::path resolvedPath(const std::filesystem::path& path);

class ExportNames {
public:
    struct Target {
        std::filesystem::path url;
        bool replaces = false; // an existing file
        bool operator==(const Target&) const = default;
    };

    ExportNames(FileSystem& files, std::filesystem::path folder, std::string fileExtension,
                bool replacing, ProtectedPaths protectedPaths);

    // The file for a photo with this name (without its extension). A name too long for any disk is
    // cut, between characters.
    Target next(const std::string& baseName);

private:
    std::string candidate(const std::string& baseName, int number) const;
    bool mayReplace(const std::filesystem::path& path, const FileStatus& status) const;

    FileSystem& files_;
    const std::filesystem::path folder_;
    const std::string fileExtension_;
    const bool replacing_;
    const ProtectedPaths protected_;
    std::set<std::string> taken_;           // file names in lower case
    std::map<std::string, int> nextSuffix_; // by base name in lower case
};

// In lower case as far as the text is UTF-8; independent of the locale.
std::string nameKey(const std::string& name);

} // namespace kelvaro
