// Keeps tone measurements of photos, so that reopening one does not measure it again: in memory by
// the bytes of their images, and on disk under the user's cache folder. Entries are found by the
// photo's place and identity. Everything that goes wrong with the disk is silent: the photo is
// measured again. Thread-safe; several programs may share the folder.
#pragma once

#include "base/Locked.h"
#include "base/SerialQueue.h"
#include "develop/ImageSource.h"
#include "platform/FileSystem.h"
#include "platform/Renderer.h"

#include <filesystem>
#include <string>
#include <vector>

namespace kelvaro {

// Changes whenever a measurement would come out differently; stored under "TWAnalysisVersion".
inline constexpr std::string_view kAnalysisVersion = "4";

class AnalysisCache {
public:
    struct Limits {
        std::size_t memoryBytes = std::size_t(128) << 20;
        std::int64_t diskBytes = std::int64_t(1) << 30;
    };

    // `folder` is made when first written to. The renderer draws images for the disk; it and
    // `files` must outlive the cache. Writes that have not begun at the end are dropped.
    AnalysisCache(FileSystem& files, std::filesystem::path folder, Renderer& renderer,
                  Limits limits, std::string version = std::string(kAnalysisVersion));

    // Hands what is known about the photo to its analyses. May read the disk.
    void recall(const ImageSource& source);
    // Keeps what its analyses have measured by now, in memory at once, on disk when the queue gets
    // to it. Does nothing when that much was kept or recalled before.
    void remember(const ImageSource& source);

    // Lets go of the memory entries, for when memory is short.
    void releaseMemory();
    // Blocks until everything remembered so far is on disk.
    void waitForWrites() { writing_.waitUntilIdle(); }

    // The bytes of the entries in memory.
    std::size_t memoryBytes() const;
    // The name of a photo's file in the folder.
    static std::string fileName(std::string_view key);

private:
    struct Entry {
        std::string key;
        ToneMeasurement measurement;
        std::uint64_t lastUse = 0;
    };
    struct Memory {
        std::vector<Entry> entries;
        std::uint64_t clock = 0;
    };

    std::optional<ToneMeasurement> inMemory(const std::string& key);
    void keepInMemory(const std::string& key, const ToneMeasurement& measurement);
    std::optional<ToneMeasurement> onDisk(const std::string& key, bool isRaw);
    void write(const std::string& key, const ToneMeasurement& measurement);

    FileSystem& files_;
    const std::filesystem::path folder_;
    Renderer& renderer_;
    const Limits limits_;
    const std::string version_;
    Locked<Memory> memory_;
    SerialQueue writing_; // last: its jobs use the rest
};

} // namespace kelvaro
