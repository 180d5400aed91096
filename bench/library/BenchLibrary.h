// The library that is measured: 100,000 photos in 1,000 folders, made once and kept. The variable
// KELVARO_BENCH_LIBRARY names its folder; without it one in the temporary folder is used.
#pragma once

#include "samples/Library.h"

#include <cstdlib>
#include <filesystem>

namespace kelvaro {

inline std::filesystem::path benchLibrary() {
    static const std::filesystem::path root = [] {
        const char* named = std::getenv("KELVARO_BENCH_LIBRARY");
        const auto folder = named ? std::filesystem::path(named)
                                  : std::filesystem::temp_directory_path() / "kelvaro-bench";
        samples::writeLibrary(folder / "library", samples::LibraryPlan{});
        return folder / "library";
    }();
    return root;
}

} // namespace kelvaro
