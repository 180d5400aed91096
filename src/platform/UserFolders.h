// Where the files of this user and this program stand. Plain values; the folders need not exist.
#pragma once

#include <filesystem>

namespace kelvaro {

struct UserFolders {
    std::filesystem::path home;
    std::filesystem::path pictures; // the user's Pictures folder
    std::filesystem::path settings; // our own, for settings and presets
    std::filesystem::path support;  // our own, for what must survive: journals, crash reports
    std::filesystem::path caches;   // our own, for what can be made again
};

} // namespace kelvaro
