// A whole library for measurements: many folders of small files whose EXIF data varies as that of a
// person who photographs for years. The same files every time for the same plan.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>

namespace kelvaro::samples {

struct LibraryPlan {
    int folders = 1000;
    int photosPerFolder = 100;
    int rawEvery = 6; // each so-manieth photo is a RAW file with its metadata alone; 0: none
};

// Fills `root`, which is made when it is missing, with folders "0001", "0002" … of JPEG and DNG
// files of 2 to 3 kB. Folders that are there already are left as they are, so that a broken-off
// run goes on. `wrote` is told the number of each finished folder. Throws std::runtime_error and
// exceptions of Exiv2.
void writeLibrary(const std::filesystem::path& root, const LibraryPlan& plan,
                  const std::function<void(int folder)>& wrote = {});

// Where the folder with that number (from 1) stands.
std::filesystem::path libraryFolder(const std::filesystem::path& root, int number);

} // namespace kelvaro::samples
