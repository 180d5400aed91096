// The libraries that are measured: 100,000 photos in 1,000 folders, and 50,000 in one folder, made
// once and kept. The variable KELVARO_BENCH_LIBRARY names their folder; without it one in the
// temporary folder is used.
#pragma once

#include "samples/Library.h"

#include <cstdlib>
#include <filesystem>

namespace kelvaro {

inline std::filesystem::path benchFolder() {
    const char* named = std::getenv("KELVARO_BENCH_LIBRARY");
    return named ? std::filesystem::path(named)
                 : std::filesystem::temp_directory_path() / "kelvaro-bench";
}

inline std::filesystem::path benchLibrary() {
    static const std::filesystem::path root = [] {
        samples::writeLibrary(benchFolder() / "library", samples::LibraryPlan{});
        return benchFolder() / "library";
    }();
    return root;
}

// Holds the one large folder.
inline std::filesystem::path benchLargeFolder() {
    static const std::filesystem::path root = [] {
        samples::writeLibrary(benchFolder() / "folder", {.folders = 1, .photosPerFolder = 50'000});
        return benchFolder() / "folder";
    }();
    return root;
}

} // namespace kelvaro
